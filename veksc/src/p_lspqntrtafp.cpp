// Quantiser of the line spectral pairs of the real-time audio codec.
#include "vkc.h"

#include <iterator>

namespace {

vkVector pSrcLSP, pSrcLPC, pDstLSP, pDstLSPIndex;
krStepIterator<int> step;
int order;
VekPCMFrequency freq;

constexpr int complexity = 4;

constexpr int orders[] = {10, 6, 4};

class TimQNTFP_RTA : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(step, "stage").set(0, 2, 1, '+');
        initVectors({&pSrcLSP, &pSrcLPC, &pDstLSP}, vkArg::src);
        initVectors({&pDstLSPIndex}, vk32s); // an index is no floating number
        return walk({&step});
    }

    bool makeData() override {
        if (!vkcCounts(step, std::size(orders))) {
            return false;
        }
        setData();
        return pSrcLSP.createVector(order, setRand, 10, 20) && pSrcLPC.createVector(order + 1, setRand, 10, 20) &&
               pDstLSP.createVector(order, setZero, 0, 0) && pDstLSPIndex.createVector(11, setZero, 0, 0);
    }

    double getDivisor() override { return order; }

private:
    virtual void setData() {
        order = orders[step.value()];
        freq = step.value() == 0 ? VEK_PCM_FREQ_8000 : VEK_PCM_FREQ_16000;
    }
};

} // namespace

VK_REG(TimQNTFP_RTA, veksLSPQuant_RTA_32f,
       veksLSPQuant_RTA_32f(pSrcLSP.m_32f, pSrcLPC.m_32f, pDstLSP.m_32f, order, pDstLSPIndex.m_32s, freq, complexity))
