// Pitch gain, pre-emphasis and conversions of line spectra of GSM AMR.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pLSF, pLSP, pSrc1, pSrc2, pResultCoeffs, pDst;
krStepIterator<int> lenght;
Vek16s pResult;

constexpr Vek16s gamma_ = 19661;

// Line spectral frequencies of a frame.
constexpr int order = 10;

class TimSAG : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        if (m_func.contains("Gain")) {
            lenght.setList({40});
        } else if (m_func.contains("Preemphasize")) {
            lenght.set(10, 80, 2, '*');
        } else {
            lenght.setList({10});
        }
        initVectors({&pLSF, &pLSP, &pSrc1, &pSrc2, &pResultCoeffs, &pDst}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        if (!pLSF.createVector(std::max<long long>(m_grid.room(lenght), order), setZero, 0, 0) ||
            !pLSP.createVector(m_grid.room(lenght), setZero, 0, 0) ||
            !pSrc1.createVector(m_grid.room(lenght), setOne, 0, 0) ||
            !pSrc2.createVector(m_grid.room(lenght), setOne, 0, 0) || !pResultCoeffs.createVector(4, setZero, 0, 0) ||
            !pDst.createVector(m_grid.room(lenght), setZero, 0, 0)) {
            return false;
        }
        SetData_LSF();
        return true;
    }

    double getDivisor() override { return lenght.value(); }

    virtual void SetData_LSF() {
        static constexpr Vek16s lsf[order] = {3992, 1236, 1534, 405, 5007, 1794, 4929, 242, 5181, 3605};
        std::memcpy(pLSF.m_16s, lsf, sizeof lsf);
    }
};

} // namespace

VK_REG(TimSAG, veksAdaptiveCodebookGainCoeffs_GSMAMR_16s,
       veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(pSrc1.m_16s, pSrc2.m_16s, &pResult, pResultCoeffs.m_16s))
VK_REG(TimSAG, veksAdaptiveCodebookGain_GSMAMR_16s,
       veksAdaptiveCodebookGain_GSMAMR_16s(pSrc1.m_16s, pSrc2.m_16s, &pResult))
VK_REG(TimSAG, veksPreemphasize_GSMAMR_16s,
       veksPreemphasize_GSMAMR_16s(gamma_, pSrc1.m_16s, pDst.m_16s, lenght.value(), &pResult))
VK_REG(TimSAG, veksInterpolate_GSMAMR_16s,
       veksInterpolate_GSMAMR_16s(pSrc1.m_16s, pSrc2.m_16s, pDst.m_16s, lenght.value()))
VK_REG(TimSAG, veksLSFToLSP_GSMAMR_16s, veksLSFToLSP_GSMAMR_16s(pLSF.m_16s, pLSP.m_16s))
