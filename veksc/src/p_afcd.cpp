// Decoding of the algebraic codebook of GSM AMR, by rate and subframe.
#include "vkc.h"

namespace {

vkVector pSrcFixedIndex, pDstFixedVector;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;

constexpr int subframeLength = 40;

class TimAfcd : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesGSMAMR, vkcSilence);
        initVectors({&pSrcFixedIndex, &pDstFixedVector}, vkArg::src);
        return walk({&mode, &subFrame});
    }

    bool makeData() override {
        return pSrcFixedIndex.createVector(10, setRand, 0, 100) &&
               pDstFixedVector.createVector(subframeLength, setZero, 0, 0);
    }

    double getDivisor() override { return subframeLength; }
};

} // namespace

VK_REG(TimAfcd, veksFixedCodebookDecode_GSMAMR_16s,
       veksFixedCodebookDecode_GSMAMR_16s(pSrcFixedIndex.m_16s, pDstFixedVector.m_16s,
                                          static_cast<Vek16s>(subFrame.value()), mode.value()))
