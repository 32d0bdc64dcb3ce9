// Open-loop pitch and kernels of the floating G.729.
#include "vkc.h"

#include <iterator>

namespace {

vkVector pSrc, pDst, pSrcLpc, pSrcSignal, pSrcSpeech, pSrcSynFltMemory, pSrc1, pSrc2;
krStepIterator<int> len, valLPCOrder, nLag;
int bestLag, maxLag, lowerLag, upperLag;
Vek32f pMax_32;
Vek64f pMax_64;
Vek32f gain;

constexpr int history = 143;
constexpr int span = 223;

// The ranges of delays that a coder searches.
constexpr int lags[][2] = {{20, 39}, {40, 79}, {80, 143}, {20, 79}, {40, 143}, {20, 143}, {30, 36}};

class Timg729fpOpenLoopP : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len").setList({span});
        initVectors({&pSrc}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override { return pSrc.createVector(span, setOne, 0, 0); }
    double getDivisor() override { return len.value(); }
};

class Timg729fp : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len");
        vkcFix(valLPCOrder, 10);
        vkcFix(nLag, 0);
        initVectors({&pDst, &pSrcLpc, &pSrcSignal, &pSrcSpeech, &pSrcSynFltMemory, &pSrc1, &pSrc2}, vkArg::src);
        if (m_synthesis) {
            len.set(40, 640, 40, '+');
            vkcRebuild(valLPCOrder, "valLPCOrder").setList({3, 4, 6, 10, 16, 30});
            return walk({&len, &valLPCOrder});
        }
        if (m_cross || m_auto) {
            len.set(40, 80, 40, '+');
            vkcRebuild(nLag, "nLag").set(0, 6, 1, '+');
            return walk({&len, &nLag});
        }
        len.setList({40});
        return walk({&len});
    }

    bool makeData() override {
        if (!vkcCounts(nLag, std::size(lags))) {
            return false;
        }
        lowerLag = lags[nLag.value()][0];
        upperLag = lags[nLag.value()][1];
        gain = 1;
        // The correlations read as far as the longest delay beside the samples.
        const int beside = m_cross || m_auto ? upperLag : 0;
        const long long order = vkcSize(valLPCOrder);
        return pDst.createVector(m_grid.room(len), setZero, 0, 0) && pSrcLpc.createVector(order + 1, setSeq, 0, 1) &&
               pSrcSignal.createVector(m_grid.room(len), setZero, 0, 0) &&
               pSrcSpeech.createVector(order, setSeq, -500, 500) &&
               pSrcSynFltMemory.createVector(order, setSeq, -10, 10) &&
               pSrc1.createVector(m_grid.room(len) + beside, setOne, 0, 0) &&
               pSrc2.createVector(m_grid.room(len) + beside, setOne, 0, 0);
    }

    double getDivisor() override {
        if (m_synthesis) {
            return static_cast<double>(len.value()) * valLPCOrder.value();
        }
        if (m_auto) {
            return static_cast<double>(len.value()) * (upperLag - lowerLag + 1);
        }
        if (m_cross) {
            return static_cast<double>(len.value()) * (upperLag - lowerLag - 1);
        }
        return len.value();
    }

private:
    const bool m_synthesis = m_func.contains("SynthesisFilter");
    const bool m_cross = m_func.contains("CrossCorrLagMax");
    const bool m_auto = m_func.contains("AutoCorrLagMax");
};

} // namespace

VK_REG(Timg729fpOpenLoopP, veksOpenLoopPitchSearch_G729A_32f,
       veksOpenLoopPitchSearch_G729A_32f(pSrc.m_32f + history, &bestLag))
VK_REG(Timg729fp, veksGainControl_G729_32f_I, veksGainControl_G729_32f_I(pSrc1.m_32f, pSrc2.m_32f, &gain))
VK_REG(Timg729fp, veksSynthesisFilter_G729_32f,
       veksSynthesisFilter_G729_32f(pSrcLpc.m_32f, valLPCOrder.value(), pSrcSignal.m_32f, pDst.m_32f, len.value(),
                                    pSrcSynFltMemory.m_32f))
VK_REG(Timg729fp, veksCrossCorrLagMax_32f64f,
       veksCrossCorrLagMax_32f64f(pSrc1.m_32f, pSrc2.m_32f, len.value(), upperLag - lowerLag - 1, &pMax_64, &maxLag))
VK_REG(Timg729fp, veksAutoCorrLagMax_32f,
       veksAutoCorrLagMax_32f(pSrc1.m_32f + upperLag, len.value(), lowerLag, upperLag, &pMax_32, &maxLag))
