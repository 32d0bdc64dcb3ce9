// Search of the gain codebooks of G.729 and its Annex D in floating point.
#include "vkc.h"

namespace {

vkVector pSrc, pSrcCand, pDstIdxs;
krStepIterator<int> valTimeFlag;

constexpr Vek32f valPredictedCodebookGain = 1;
constexpr int candidates = 32;

class TimGainfp : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(valTimeFlag, "valTimeFlag").set(0, 1, 1, '+');
        initVectors({&pSrc}, vkArg::src);
        // Numbers of entries.
        initVectors({&pSrcCand, &pDstIdxs}, vk16s);
        return walk({&valTimeFlag});
    }

    bool makeData() override {
        return pSrc.createVector(5, setOne, 0, 0) && pSrcCand.createVector(2, setOne, 0, 0) &&
               pDstIdxs.createVector(2, setZero, 0, 0);
    }

    double getDivisor() override { return candidates; }
};

} // namespace

VK_REG(TimGainfp, veksGainCodebookSearch_G729D_32f,
       veksGainCodebookSearch_G729D_32f(pSrc.m_32f, pSrcCand.m_16s, pDstIdxs.m_16s, valTimeFlag.value(),
                                        valPredictedCodebookGain))
VK_REG(TimGainfp, veksGainCodebookSearch_G729_32f,
       veksGainCodebookSearch_G729_32f(pSrc.m_32f, pSrcCand.m_16s, pDstIdxs.m_16s, valTimeFlag.value(),
                                       valPredictedCodebookGain))
