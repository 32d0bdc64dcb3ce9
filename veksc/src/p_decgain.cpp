// Gains of G.729 from their codes.
#include "vkc.h"

namespace {

vkVector quaIndex, pSrc, pPastEnergy, pitchGain;
krStepIterator<int> lenght;
Vek32s energy;

constexpr int subframe = 40;

class TimDecGain : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").setList({4});
        initVectors({&quaIndex, &pSrc, &pPastEnergy, &pitchGain}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return quaIndex.createVector(2, setValue, 86, 0) && pSrc.createVector(subframe, setValue, 8191, 0) &&
               pPastEnergy.createVector(m_grid.room(lenght), setValue, -14336, 0) &&
               pitchGain.createVector(2, setZero, 0, 0) &&
               vkcDone(veksDotProd_G729A_16s32s(pSrc.m_16s, pSrc.m_16s, subframe, &energy));
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimDecGain, veksDecodeGain_G729_16s,
       veksDecodeGain_G729_16s(energy, pPastEnergy.m_16s, quaIndex.m_16s, pitchGain.m_16s))
