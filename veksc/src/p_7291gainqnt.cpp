// Gains of G.729.1: spectral frequencies, gain of the second layer, gain control and tilt of the post filter.
#include "vkc.h"

namespace {

vkVector pSrcFixedTarget, pSrcFltFixedVector, parm, pQuantIndex, pSrcDstPrevLSF, pSrcDstLSF, pSrc, pSrcDst, pDst;
krStepIterator<int> len, subFrame;
Vek16s pDstQGainIndex, pDstQGain, pGain, pSmoothLevel;

constexpr int subframeLength = 40;
constexpr int history = 40;
constexpr Vek16s valSrcQGain = 2048;
constexpr Vek16s valShare = 410;
constexpr Vek16s valTilt = -9830;
constexpr Vek16s NBFlag = 1;

class Tim7291gainqnt : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        const int size = m_lsf ? 10 : subframeLength;
        vkcRebuild(len, "len").setList({size});
        initVectors({&pSrcFixedTarget, &pSrcFltFixedVector, &parm, &pQuantIndex, &pSrcDstPrevLSF, &pSrcDstLSF, &pSrc,
                     &pSrcDst, &pDst},
                    vkArg::src);
        if (m_quant) {
            vkcRebuild(subFrame, "subFrame").set(1, 4, 1, '+');
            return walk({&len, &subFrame});
        }
        vkcFix(subFrame, 1);
        return walk({&len});
    }

    bool makeData() override {
        const long long size = m_grid.room(len);
        if (m_quant) {
            return pSrcFixedTarget.createVector(size, setRand, -2048, 2048) &&
                   pSrcFltFixedVector.createVector(size, setRand, -2048, 2048);
        }
        if (m_lsf) {
            // The prediction reaches back over four vectors.
            if (!parm.createVector(2, setRand, 0, 20) || !pQuantIndex.createVector(4, setZero, 0, 0) ||
                !pSrcDstPrevLSF.createVector(history, setRand, 0, 4096) ||
                !pSrcDstLSF.createVector(size, setRand, 0, 4096)) {
                return false;
            }
            setData(parm.m_16s, pQuantIndex.m_16s);
            return true;
        }
        if (m_func.contains("veksGainControl_G7291_16s_I")) {
            pGain = 16384;
            pSmoothLevel = 16384;
            return pSrc.createVector(size, setRand, -2048, 2048) && pSrcDst.createVector(size, setRand, -2048, 2048);
        }
        return pSrc.createVector(subframeLength + 1, setRand, -2048, 2048) &&
               pDst.createVector(subframeLength, setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }

    // The four indices of the two words of the bit stream.
    void setData(const short* words, short* indices) {
        indices[0] = static_cast<short>(words[0] >> 7 & 1);
        indices[1] = static_cast<short>(words[0] & 127);
        indices[2] = static_cast<short>(words[1] >> 5 & 31);
        indices[3] = static_cast<short>(words[1] & 31);
    }

private:
    const bool m_lsf = m_func.contains("veksLSFDecode_G7291_16s");
    const bool m_quant = m_func.contains("veksGainQuant_G7291_16s");
};

} // namespace

VK_REG(Tim7291gainqnt, veksTiltCompensation_G7291_16s, veksTiltCompensation_G7291_16s(pSrc.m_16s, pDst.m_16s, valTilt))
VK_REG(Tim7291gainqnt, veksGainControl_G7291_16s_I,
       veksGainControl_G7291_16s_I(pSrc.m_16s, pSrcDst.m_16s, &pGain, valShare, NBFlag, &pSmoothLevel))
VK_REG(Tim7291gainqnt, veksGainQuant_G7291_16s,
       veksGainQuant_G7291_16s(pSrcFixedTarget.m_16s, pSrcFltFixedVector.m_16s, valSrcQGain, &pDstQGainIndex,
                               &pDstQGain, static_cast<Vek16s>(subFrame.value())))
VK_REG(Tim7291gainqnt, veksLSFDecode_G7291_16s,
       veksLSFDecode_G7291_16s(pQuantIndex.m_16s, pSrcDstPrevLSF.m_16s, pSrcDstLSF.m_16s))
