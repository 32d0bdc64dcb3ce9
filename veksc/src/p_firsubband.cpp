// Filters of subbands.
#include "vkc.h"

namespace {

vkVector pDstSignalOut;
krStepIterator<int> len, numSegments;
vkcScaleIterator scaleFactor;
krStepIterator<int> startSubband;
vkcRows<Vek32sc> ppSrcSignalIn, ppSrcCoefs;

class TimFiltACE : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Length").set(32, 64, 8, '+');
        vkcRebuild(numSegments, "Num Segments").set(8, 32, 8, '+');
        initVectors({&pDstSignalOut}, vkArg::src);
        if (m_low) {
            vkcScales(scaleFactor, "scaleFactor", m_func, 0, 16, 20);
            vkcRebuild(startSubband, "Start Number Segments").set(2, 6, 2, '+');
            return walk({&len, &numSegments, &scaleFactor, &startSubband});
        }
        vkcScales(scaleFactor, "scaleFactor", m_func, -16, 0, 16);
        vkcFix(startSubband, 0);
        return walk({&len, &numSegments, &scaleFactor});
    }

    bool makeData() override {
        if (!pDstSignalOut.createVector(len.value(), setZero, 0, 0) || !makeRows()) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override {
        return (static_cast<double>(len.value()) - (m_low ? startSubband.value() : 0)) * numSegments.value();
    }

    virtual bool makeRows() {
        return initRows(ppSrcSignalIn, numSegments.value(), len.value(), veksMalloc_32sc) &&
               initRows(ppSrcCoefs, numSegments.value(), len.value(), veksMalloc_32sc);
    }

    virtual void setData() {
        ppSrcSignalIn.fill(len.value(), {1, 1});
        ppSrcCoefs.fill(len.value(), {1, 1});
    }

private:
    const bool m_low = m_func.contains("Low");
};

} // namespace

VK_REG(TimFiltACE, veksFIRSubbandLow_EC_32sc_Sfs,
       veksFIRSubbandLow_EC_32sc_Sfs(ppSrcSignalIn.table, ppSrcCoefs.table, numSegments.value(), pDstSignalOut.m_32sc,
                                     startSubband.value(), len.value(), scaleFactor.value()))
VK_REG(TimFiltACE, veksFIRSubband_EC_32sc_Sfs,
       veksFIRSubband_EC_32sc_Sfs(ppSrcSignalIn.table, ppSrcCoefs.table, pDstSignalOut.m_32sc, numSegments.value(),
                                  len.value(), scaleFactor.value()))
