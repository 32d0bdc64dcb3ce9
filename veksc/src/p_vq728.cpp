// Codebook search of G.728 by rate, and the energies that it needs.
#include "vkc.h"

namespace {

vkVector pSrc;
vkVector pEnergy;
krEnumIterator<VekSpchBitRate> mode;
vkcGrid grid;
Vek16s shapeIdx;
Vek16s gainIdx;
Vek16s codebookIdx;
Vek16s* const pDstShapeIdx = &shapeIdx;
Vek16s* const pDstGainIdx = &gainIdx;
Vek16s* const pDstCodebookIdx = &codebookIdx;

constexpr int vectorLength = 5;
constexpr int shapes = 128;

class TimVQ728 : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return 1; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimVQ728::canStart() {
    vkcRebuild(mode, "BitRate").resetValidation();
    for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_12800, VEK_SPCHBR_9600}) {
        mode.add(rate);
        mode.addValidation(rate);
        if (!m_func.contains("Search")) {
            break; // the energies are those of all shapes at any rate
        }
    }
    grid.begin({&mode});
    pSrc.init(m_func, vkArg::src);
    pEnergy.init(m_func, vkArg::src);
    return true;
}

bool TimVQ728::makeData() {
    return pSrc.createVector(vectorLength, setRand, -2048, 2048) && pEnergy.createVector(shapes, setRand, -2048, 2048);
}

void TimVQ728::flushData() {
    pEnergy.deleteVector();
    pSrc.deleteVector();
}

} // namespace

VK_REG(TimVQ728, veksImpulseResponseEnergy_G728_16s, veksImpulseResponseEnergy_G728_16s(pSrc.m_16s, pEnergy.m_16s))
VK_REG(TimVQ728, veksCodebookSearch_G728_16s,
       veksCodebookSearch_G728_16s(pSrc.m_16s, pEnergy.m_16s, pDstShapeIdx, pDstGainIdx, pDstCodebookIdx, mode.value()))
