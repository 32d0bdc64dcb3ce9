// Filters of subbands.
#include "vkc.h"

namespace {

vkVector pDstSignalOut;
krStepIterator<int> len;
krStepIterator<int> numSegments;
vkcScaleIterator scaleFactor;
krStepIterator<int> startSubband;
vkcGrid grid;
vkcRows<Vek32sc> ppSrcSignalIn;
vkcRows<Vek32sc> ppSrcCoefs;

class TimFiltACE : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
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

bool TimFiltACE::makeData() {
    if (!pDstSignalOut.createVector(len.value(), setZero, 0, 0) || !makeRows()) {
        return false;
    }
    setData();
    return true;
}

bool TimFiltACE::makeRows() {
    return ppSrcSignalIn.make(numSegments.value(), len.value(), veksMalloc_32sc) &&
           ppSrcCoefs.make(numSegments.value(), len.value(), veksMalloc_32sc);
}

void TimFiltACE::setData() {
    for (int row = 0; row < numSegments.value(); ++row) {
        for (int i = 0; i < len.value(); ++i) {
            ppSrcSignalIn.table[row][i] = {1, 1};
            ppSrcCoefs.table[row][i] = {1, 1};
        }
    }
}

void TimFiltACE::flushData() {
    ppSrcCoefs.drop();
    ppSrcSignalIn.drop();
    pDstSignalOut.deleteVector();
}

double TimFiltACE::getDivisor() {
    return (static_cast<double>(len.value()) - (m_low ? startSubband.value() : 0)) * numSegments.value();
}

} // namespace

VK_REG(TimFiltACE, veksFIRSubbandLow_EC_32sc_Sfs,
       veksFIRSubbandLow_EC_32sc_Sfs(ppSrcSignalIn.table, ppSrcCoefs.table, numSegments.value(), pDstSignalOut.m_32sc,
                                     startSubband.value(), len.value(), scaleFactor.value()))
VK_REG(TimFiltACE, veksFIRSubband_EC_32sc_Sfs,
       veksFIRSubband_EC_32sc_Sfs(ppSrcSignalIn.table, ppSrcCoefs.table, pDstSignalOut.m_32sc, numSegments.value(),
                                  len.value(), scaleFactor.value()))
