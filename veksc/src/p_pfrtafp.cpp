// Short-term post-filter of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrcLPC, pSrcDstSpeech, rgfltSTApfMem;
krStepIterator<int> len, order, apfIdx;
VeksPostFilterState_RTA_32f* pMem_32f;

class STPF_RTA : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(80, 160, 80, '+');
        vkcRebuild(order, "Order").set(4, 17, 2, '+');
        vkcRebuild(apfIdx, "apfIdx").set(1, 3, 1, '+');
        initVectors({&pSrcLPC, &pSrcDstSpeech, &rgfltSTApfMem}, vkArg::src);
        return walk({&len, &order, &apfIdx});
    }

    bool makeData() override {
        // Of order n there are n + 1 coefficients.
        return initState(pMem_32f, veksPostFilterGetStateSize_RTA_32f, veksPostFilterInit_RTA_32f) &&
               pSrcLPC.createVector(vkcSize(order) + 1, setRand, 10, 40) &&
               pSrcDstSpeech.createVector(len.value(), setZero, 0, 0) && rgfltSTApfMem.createVector(51, setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(STPF_RTA, veksPostFilter_RTA_32f_I,
       veksPostFilter_RTA_32f_I(pSrcLPC.m_32f, order.value(), pSrcDstSpeech.m_32f, len.value(), apfIdx.value(),
                                rgfltSTApfMem.m_32f, pMem_32f))
