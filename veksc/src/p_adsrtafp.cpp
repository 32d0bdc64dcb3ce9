// Adaptive codebook of the real-time audio codec.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrcAdptTarget, pSrcImpulseResponse, pSrcBoundary, pSrcDstExc, pSrcDstLag, pDstAdptIndex, pDstAdptContribution;
krStepIterator<int> subFrameSize, searchFlag, deltaSearchRange;

// Samples of the past before the last subframe, and all of them with the subframes of the m_grid.
constexpr int history = 212;
constexpr long long excitation = 372;

class TimADRTA_RTA : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrameSize, "subFrameSize").set(20, 40, 20, '+');
        vkcRebuild(searchFlag, "searchFlag").set(0, 1, 1, '+');
        vkcRebuild(deltaSearchRange, "deltaSearchRange").setList({32, 64, 160});
        initVectors(
            {&pSrcAdptTarget, &pSrcImpulseResponse, &pSrcBoundary, &pSrcDstExc, &pSrcDstLag, &pDstAdptContribution},
            vkArg::src);
        initVectors({&pDstAdptIndex}, vk32s); // an index is no floating number
        return walk({&subFrameSize, &searchFlag, &deltaSearchRange});
    }

    bool makeData() override {
        const long long n = vkcSize(subFrameSize);
        // The table has four boundaries and writes five.
        if (!pSrcAdptTarget.createVector(n, setRand, 10, 20) || !pSrcImpulseResponse.createVector(n, setRand, 10, 20) ||
            !pSrcBoundary.createVector(5, setZero, 0, 0) ||
            !pSrcDstExc.createVector(std::max(excitation, history + 2 * n), setRand, 0, 10) ||
            !pSrcDstLag.createVector(1, setZero, 0, 0) || !pDstAdptIndex.createVector(1, setZero, 0, 0) ||
            !pDstAdptContribution.createVector(n, setZero, 0, 0)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return subFrameSize.value(); }

private:
    virtual void setData() {
        int i = 0;
        for (const Vek32f boundary : {1.0F, 18.0F, 48.0F, 86.0F, 145.0F}) {
            pSrcBoundary.m_32f[i++] = boundary;
        }
    }
};

} // namespace

VK_REG(TimADRTA_RTA, veksAdaptiveCodebookSearch_RTA_32f,
       veksAdaptiveCodebookSearch_RTA_32f(pSrcAdptTarget.m_32f, pSrcImpulseResponse.m_32f, subFrameSize.value(),
                                          pSrcBoundary.m_32f, pSrcDstExc.m_32f + subFrameSize.value() + history,
                                          pSrcDstLag.m_32f, pDstAdptIndex.m_32s, pDstAdptContribution.m_32f,
                                          deltaSearchRange.value(), searchFlag.value()))
