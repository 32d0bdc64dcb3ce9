// Filters of subbands.
#include "vkc.h"

namespace {

vkVector pDstSignalOut;
krStepIterator<int> len;
krStepIterator<int> numSegments;
vkcScaleIterator scaleFactor;
krStepIterator<int> startSubband;
vkcGrid grid;
Vek32sc** ppSrcSignalIn;
Vek32sc** ppSrcCoefs;
int madeRows;

class TimFiltACE : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override;
    void flushData() override;
    double getDivisor() override;
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
    virtual bool makeRows();
    virtual void setData();

private:
    bool m_low = false;
};

bool TimFiltACE::canStart() {
    m_low = m_func.contains("Low");
    vkcRebuild(len, "Length").set(32, 64, 8, '+');
    vkcRebuild(numSegments, "Num Segments").set(8, 32, 8, '+');
    if (m_low) {
        vkcScales(scaleFactor, "scaleFactor", m_func, 0, 16, 20);
        vkcRebuild(startSubband, "Start Number Segments").set(2, 6, 2, '+');
        grid.begin({&len, &numSegments, &scaleFactor, &startSubband});
    } else {
        vkcScales(scaleFactor, "scaleFactor", m_func, -16, 0, 16);
        vkcFix(startSubband, 0);
        grid.begin({&len, &numSegments, &scaleFactor});
    }
    pDstSignalOut.init(m_func, vkArg::src);
    return true;
}

bool TimFiltACE::canContinue() {
    if (!grid.next(m_isFirst) || !pDstSignalOut.createVector(len.value(), setZero, 0, 0) || !makeRows()) {
        return false;
    }
    setData();
    return true;
}

bool TimFiltACE::makeRows() {
    const int rows = numSegments.value();
    const int tableBytes = rows * static_cast<int>(sizeof(Vek32sc*));
    ppSrcSignalIn = reinterpret_cast<Vek32sc**>(veksMalloc_8u(tableBytes));
    ppSrcCoefs = reinterpret_cast<Vek32sc**>(veksMalloc_8u(tableBytes));
    if (ppSrcSignalIn == nullptr || ppSrcCoefs == nullptr) {
        return false;
    }
    bool made = true;
    for (madeRows = 0; madeRows < rows; ++madeRows) {
        ppSrcSignalIn[madeRows] = veksMalloc_32sc(len.value());
        ppSrcCoefs[madeRows] = veksMalloc_32sc(len.value());
        made = made && ppSrcSignalIn[madeRows] != nullptr && ppSrcCoefs[madeRows] != nullptr;
    }
    return made;
}

void TimFiltACE::setData() {
    for (int row = 0; row < numSegments.value(); ++row) {
        for (int i = 0; i < len.value(); ++i) {
            ppSrcSignalIn[row][i] = {1, 1};
            ppSrcCoefs[row][i] = {1, 1};
        }
    }
}

void TimFiltACE::flushData() {
    for (; madeRows > 0; --madeRows) {
        veksFree(ppSrcSignalIn[madeRows - 1]);
        veksFree(ppSrcCoefs[madeRows - 1]);
    }
    veksFree(ppSrcSignalIn);
    veksFree(ppSrcCoefs);
    ppSrcSignalIn = nullptr;
    ppSrcCoefs = nullptr;
    pDstSignalOut.deleteVector();
}

double TimFiltACE::getDivisor() {
    return (len.value() - (m_low ? startSubband.value() : 0)) * numSegments.value();
}

} // namespace

VK_REG(TimFiltACE, veksFIRSubbandLow_EC_32sc_Sfs,
       veksFIRSubbandLow_EC_32sc_Sfs(ppSrcSignalIn, ppSrcCoefs, numSegments.value(), pDstSignalOut.m_32sc,
                                     startSubband.value(), len.value(), scaleFactor.value()))
VK_REG(TimFiltACE, veksFIRSubband_EC_32sc_Sfs,
       veksFIRSubband_EC_32sc_Sfs(ppSrcSignalIn, ppSrcCoefs, pDstSignalOut.m_32sc, numSegments.value(), len.value(),
                                  scaleFactor.value()))
