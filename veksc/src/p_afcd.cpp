// Decoding of the algebraic codebook of GSM AMR, by rate and subframe.
#include "vkc.h"

namespace {

vkVector pSrcFixedIndex;
vkVector pDstFixedVector;
krStepIterator<int> subFrame;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;

constexpr int subframeLength = 40;

class TimAfcd : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return subframeLength; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimAfcd::canStart() {
    vkcRebuild(subFrame, "SubFrame").set(0, 3, 1, '+');
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate :
         {VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900, VEK_SPCHBR_6700, VEK_SPCHBR_7400, VEK_SPCHBR_7950,
          VEK_SPCHBR_10200, VEK_SPCHBR_12200, VEK_SPCHBR_DTX}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    grid.begin({&mode, &subFrame});
    for (vkVector* vector : {&pSrcFixedIndex, &pDstFixedVector}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimAfcd::makeData() {
    return pSrcFixedIndex.createVector(10, setRand, 0, 100) &&
           pDstFixedVector.createVector(subframeLength, setZero, 0, 0);
}

void TimAfcd::flushData() {
    for (vkVector* vector : {&pDstFixedVector, &pSrcFixedIndex}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimAfcd, veksFixedCodebookDecode_GSMAMR_16s,
       veksFixedCodebookDecode_GSMAMR_16s(pSrcFixedIndex.m_16s, pDstFixedVector.m_16s,
                                          static_cast<Vek16s>(subFrame.value()), mode.value()))
