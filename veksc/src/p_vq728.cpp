// Codebook search of G.728 by rate, and the energies that it needs.
#include "vkc.h"

namespace {

vkVector pSrc, pEnergy;
krEnumIterator<VekSpchBitRate> mode;
Vek16s shapeIdx, gainIdx, codebookIdx;
Vek16s* const pDstShapeIdx = &shapeIdx;
Vek16s* const pDstGainIdx = &gainIdx;
Vek16s* const pDstCodebookIdx = &codebookIdx;

constexpr int vectorLength = 5;
constexpr int shapes = 128;

class TimVQ728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(mode, "BitRate").resetValidation();
        for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_12800, VEK_SPCHBR_9600}) {
            mode.add(rate);
            mode.addValidation(rate);
            if (!m_func.contains("Search")) {
                break; // the energies are those of all shapes at any rate
            }
        }
        initVectors({&pSrc, &pEnergy}, vkArg::src);
        return walk({&mode});
    }

    bool makeData() override {
        return pSrc.createVector(vectorLength, setRand, -2048, 2048) &&
               pEnergy.createVector(shapes, setRand, -2048, 2048);
    }

    double getDivisor() override { return 1; }
};

} // namespace

VK_REG(TimVQ728, veksImpulseResponseEnergy_G728_16s, veksImpulseResponseEnergy_G728_16s(pSrc.m_16s, pEnergy.m_16s))
VK_REG(TimVQ728, veksCodebookSearch_G728_16s,
       veksCodebookSearch_G728_16s(pSrc.m_16s, pEnergy.m_16s, pDstShapeIdx, pDstGainIdx, pDstCodebookIdx, mode.value()))
