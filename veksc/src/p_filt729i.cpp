// Prediction filters of G.729 Annex E, of order 10 and 30.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrcLpc, pDstSignal, pSrcSpeech;
krStepIterator<int> valLPCOrder, lenght;

// Of the m_grid.
constexpr int longestOrder = 30;
Vek16s* pSrcDstSynFltMemory;

class TimFilt729I : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(valLPCOrder, "valLPCOrder").set(10, 30, 20, '+');
        vkcRebuild(lenght, "lenght").set(40, 80, 20, '+');
        initVectors({&pSrcLpc, &pDstSignal, &pSrcSpeech}, vkArg::src);
        return walk({&valLPCOrder, &lenght});
    }

    bool makeData() override {
        // The residual filter reads the samples of its order before the first.
        const int before = m_func.contains("Residual") ? valLPCOrder.value() : 0;
        const int order = std::max(valLPCOrder.value(), longestOrder);
        if (!pSrcLpc.createVector(order + 1LL, setOne, 0, 0) ||
            !pDstSignal.createVector(lenght.value(), setZero, 0, 0) ||
            !pSrcSpeech.createVector(before + vkcSize(lenght), setRand, -512, 512)) {
            return false;
        }
        return hold(pSrcDstSynFltMemory, veksMalloc_16s(order), veksFree) &&
               vkcDone(veksZero_16s(pSrcDstSynFltMemory, order));
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimFilt729I, veksSynthesisFilter_G729E_16s_I,
       veksSynthesisFilter_G729E_16s_I(pSrcLpc.m_16s, valLPCOrder.value(), pDstSignal.m_16s, lenght.value(),
                                       pSrcDstSynFltMemory))
VK_REG(TimFilt729I, veksSynthesisFilter_G729E_16s,
       veksSynthesisFilter_G729E_16s(pSrcLpc.m_16s, valLPCOrder.value(), pSrcSpeech.m_16s, pDstSignal.m_16s,
                                     lenght.value(), pSrcDstSynFltMemory))
VK_REG(TimFilt729I, veksResidualFilter_G729E_16s,
       veksResidualFilter_G729E_16s(pSrcLpc.m_16s, valLPCOrder.value(), pSrcSpeech.m_16s + valLPCOrder.value(),
                                    pDstSignal.m_16s, lenght.value()))
