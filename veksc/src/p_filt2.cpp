// Tilt compensation, high-pass and harmonic noise shaping filters of G.723.1.
#include "vkc.h"

namespace {

vkVector pTmp, pSrcDst, pSrcArray, pSrc, pDst;
krStepIterator<int> lenght;
const Vek16s* pSrc_H;
Vek32s mem[2];
int dataSize;

constexpr int frame = 385;
constexpr int history = 144;
constexpr Vek16s val = 8192;
constexpr int T = 120;

class TimFilt2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        if (m_harmonic) {
            lenght.set(10, 60, 10, '+');
        } else {
            lenght.setList({m_func.contains("Tilt") ? 62 : 241});
        }
        initVectors({&pTmp, &pSrcDst, &pSrcArray, &pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lenght});
    }

    bool makeData() override {
        mem[0] = mem[1] = 0;
        if (m_harmonic) {
            return createHarmonicData();
        }
        return pSrc.createVector(m_grid.room(lenght), setRand, -16384, 16384) &&
               pDst.createVector(m_grid.room(lenght), setZero, 0, 0) &&
               pTmp.createVector(m_grid.room(lenght), setRand, -8192, 8192);
    }

    double getDivisor() override { return lenght.value(); }

private:
    bool createHarmonicData() {
        if (!pTmp.createVector(frame, setRand, 0, 0) || !pSrcDst.createVector(frame, setZero, 0, 0) ||
            !pSrcArray.createVector(204, setRand, -8192, 8192)) {
            return false;
        }
        dataSize = frame * vkVector::item(m_func);
        pSrc_H = pSrcArray.m_16s + history;
        return true;
    }

    const bool m_harmonic = m_func.contains("Harmonic");
};

} // namespace

VK_REG(TimFilt2, veksTiltCompensation_G723_32s16s, veksTiltCompensation_G723_32s16s(val, pSrc.m_32s, pDst.m_16s))
VK_REG(TimFilt2, veksHighPassFilter_G723_16s, veksHighPassFilter_G723_16s(pSrc.m_16s, pDst.m_16s, mem))
VK_REG_I(TimFilt2, veksHarmonicNoiseSubtract_G723_16s_I,
         veksHarmonicNoiseSubtract_G723_16s_I(val, T, pSrc_H, pSrcDst.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
