// Open-loop pitch, harmonic noise shaping and correlation matrix of G.723.1.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> lenght_src, lenght_dst;
Vek16s pitch[1], pResultHarmonicDelay, pResultHarmonicGain;

constexpr Vek16s valOpenDelay = 60;
// Samples before the pointer that the searches get.
constexpr int harmonicHistory = 148;
constexpr int pitchHistory = 145;

class TimCdbk2 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght_src, "lenght SRC");
        vkcRebuild(lenght_dst, "lenght SRC");
        if (m_matrix) {
            lenght_src.setList({60});
            lenght_dst.setList({416});
        } else if (m_func.contains("veksOpenLoopPitchSearch_G723_16s")) {
            lenght_src.setList({pitchHistory + 120});
            lenght_dst.setList({120});
        } else if (m_func.contains("veksHarmonicSearch_G723_16s")) {
            lenght_src.setList({harmonicHistory + 60});
            lenght_dst.setList({60});
        }
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lenght_src, &lenght_dst});
    }

    bool makeData() override {
        return pSrc.createVector(m_grid.room(lenght_src), m_matrix ? setZero : setRand, 0, 0) &&
               pDst.createVector(m_grid.room(lenght_dst), setZero, 0, 0);
    }

    double getDivisor() override { return lenght_dst.value(); }

private:
    const bool m_matrix = m_func.contains("veksToeplizMatrix_G723");
};

} // namespace

VK_REG(TimCdbk2, veksHarmonicSearch_G723_16s,
       veksHarmonicSearch_G723_16s(valOpenDelay, pSrc.m_16s + harmonicHistory, &pResultHarmonicDelay,
                                   &pResultHarmonicGain))
VK_REG(TimCdbk2, veksOpenLoopPitchSearch_G723_16s, veksOpenLoopPitchSearch_G723_16s(pSrc.m_16s + pitchHistory, pitch))
VK_REG(TimCdbk2, veksToeplizMatrix_G723_16s, veksToeplizMatrix_G723_16s(pSrc.m_16s, pDst.m_16s))
VK_REG(TimCdbk2, veksToeplizMatrix_G723_16s32s, veksToeplizMatrix_G723_16s32s(pSrc.m_16s, pDst.m_32s))
