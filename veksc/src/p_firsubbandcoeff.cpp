// Updates of the coefficients of subband filters: affine projection in floating point, LMS in 32-bit integers.
#include "vkc.h"

namespace {

vkVector pSrcError, prodStepErrQ;
krStepIterator<int> len, numSegments, apOrder, scaleFactorCoef, startSubband;
Vek32s* pStepSize;

vkcRows<Vek64f> ppStepSize;
vkcRows<Vek32fc> ppInputAp, ppErrorAp, ppCoefsAp;
vkcRows<Vek32sc> ppSrcFilterInput, ppSrcDstCoefsQ15;

class TimUpdatePrimAp : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Length").setList({65});
        vkcRebuild(numSegments, "Number of segments").setList({12});
        vkcRebuild(apOrder, "affine projection order").set(1, 4, 3, '+');
        return walk({&len, &numSegments, &apOrder});
    }

    bool makeData() override {
        const long long rows = vkcSize(numSegments) + vkcSize(apOrder);
        if (!initRows(ppStepSize, apOrder.value(), len.value(), veksMalloc_64f) ||
            !initRows(ppInputAp, rows, len.value(), veksMalloc_32fc) ||
            !initRows(ppErrorAp, apOrder.value(), len.value(), veksMalloc_32fc) ||
            !initRows(ppCoefsAp, rows, len.value(), veksMalloc_32fc)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return static_cast<double>(len.value()) * numSegments.value(); }

    virtual void setData() {
        for (int row = 0; row < numSegments.value() + apOrder.value(); ++row) {
            veksZero_32fc(ppInputAp.table[row], len.value());
            veksZero_32fc(ppCoefsAp.table[row], len.value());
        }
        for (int row = 0; row < apOrder.value(); ++row) {
            veksZero_32fc(ppErrorAp.table[row], len.value());
            veksZero_64f(ppStepSize.table[row], len.value());
        }
    }
};

class TimUpdatePrim : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Length").set(32, 64, 8, '+');
        vkcRebuild(numSegments, "Num Segments").set(8, 32, 8, '+');
        vkcRebuild(scaleFactorCoef, "scaleFactor").set(1, 31, 15, '+');
        initVectors({&pSrcError, &prodStepErrQ}, vkArg::src);
        if (m_low) {
            vkcRebuild(startSubband, "Srart Number Segments").set(2, 6, 2, '+');
            return walk({&len, &numSegments, &scaleFactorCoef, &startSubband});
        }
        vkcFix(startSubband, 0);
        return walk({&len, &numSegments, &scaleFactorCoef});
    }

    bool makeData() override {
        if (!pSrcError.createVector(m_grid.room(len), setOne, 0, 0) ||
            !prodStepErrQ.createVector(m_grid.room(len), setZero, 0, 0)) {
            return false;
        }
        if (!hold(pStepSize, veksMalloc_32s(len.value()), veksFree) ||
            !initRows(ppSrcFilterInput, numSegments.value(), len.value(), veksMalloc_32sc) ||
            !initRows(ppSrcDstCoefsQ15, numSegments.value(), len.value(), veksMalloc_32sc)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override {
        return (static_cast<double>(len.value()) - (m_low ? startSubband.value() : 0)) * numSegments.value();
    }

    virtual void setData() {
        for (int i = 0; i < len.value(); ++i) {
            pStepSize[i] = 1;
        }
        ppSrcFilterInput.fill(len.value(), {1, 1});
        ppSrcDstCoefsQ15.fill(len.value(), {1, 1});
    }

private:
    const bool m_low = m_func.contains("Low");
};

} // namespace

VK_REG(TimUpdatePrimAp, veksFIRSubbandAPCoeffUpdate_EC_32fc_I,
       veksFIRSubbandAPCoeffUpdate_EC_32fc_I(ppStepSize.table, ppInputAp.table, ppErrorAp.table, ppCoefsAp.table,
                                             numSegments.value(), len.value(), apOrder.value()))
VK_REG(TimUpdatePrim, veksFIRSubbandLowCoeffUpdate_EC_32sc_I,
       veksFIRSubbandLowCoeffUpdate_EC_32sc_I(ppSrcFilterInput.table, pSrcError.m_32sc, ppSrcDstCoefsQ15.table,
                                              numSegments.value(), prodStepErrQ.m_32sc, pStepSize, startSubband.value(),
                                              len.value(), scaleFactorCoef.value()))
VK_REG(TimUpdatePrim, veksFIRSubbandCoeffUpdate_EC_32sc_I,
       veksFIRSubbandCoeffUpdate_EC_32sc_I(pStepSize, ppSrcFilterInput.table, pSrcError.m_32sc, ppSrcDstCoefsQ15.table,
                                           numSegments.value(), len.value(), scaleFactorCoef.value()))
