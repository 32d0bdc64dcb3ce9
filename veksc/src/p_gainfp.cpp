// Search of the gain codebooks of G.729 and its Annex D in floating point.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pSrcCand;
vkVector pDstIdxs;
krStepIterator<int> valTimeFlag;
vkcGrid grid;

constexpr Vek32f valPredictedCodebookGain = 1;
constexpr int candidates = 32;

class TimGainfp : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return candidates; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimGainfp::canStart() {
    vkcRebuild(valTimeFlag, "valTimeFlag").set(0, 1, 1, '+');
    grid.begin({&valTimeFlag});
    pSrc.init(m_func, vkArg::src);
    // Numbers of entries.
    pSrcCand.init(vk16s);
    pDstIdxs.init(vk16s);
    return true;
}

bool TimGainfp::makeData() {
    return pSrc.createVector(5, setOne, 0, 0) && pSrcCand.createVector(2, setOne, 0, 0) &&
           pDstIdxs.createVector(2, setZero, 0, 0);
}

void TimGainfp::flushData() {
    for (vkVector* vector : {&pDstIdxs, &pSrcCand, &pSrc}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimGainfp, veksGainCodebookSearch_G729D_32f,
       veksGainCodebookSearch_G729D_32f(pSrc.m_32f, pSrcCand.m_16s, pDstIdxs.m_16s, valTimeFlag.value(),
                                        valPredictedCodebookGain))
VK_REG(TimGainfp, veksGainCodebookSearch_G729_32f,
       veksGainCodebookSearch_G729_32f(pSrc.m_32f, pSrcCand.m_16s, pDstIdxs.m_16s, valTimeFlag.value(),
                                       valPredictedCodebookGain))
