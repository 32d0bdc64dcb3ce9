// Harmonic, residual, synthesis and high-pass filters.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pLPC, pSrc, pDst, pMem, pTmp, pSrcDst;
vkcScaleIterator scaleFactor;
krStepIterator<int> scale, lenght, lenght_lpc, i_mem;
int dataSize;
long long past;
char* pMemUpdated;
int fltSize;

constexpr int T = 40;
constexpr int order = 10;
// What the residual filter works on, whatever the length is.
constexpr long long subframe = 40;
constexpr Vek16s beta = 16384;
constexpr Vek32f betaFloat = 0.5F;
const Vek16s stableLpc[order + 1] = {4096, 852, 825, 441, 159, -209, -411, -420, -494, -593, -711};

class TimFilt : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        vkcFix(scale, 1);
        vkcFix(lenght_lpc, m_harmonic || m_highPass ? 1 : order + 1);
        vkcFix(i_mem, 1);
        vkcScales(scaleFactor, "scaleFactor", m_func, m_highPass ? 13 : 12);
        initVectors({&pLPC, &pSrc, &pDst, &pMem, &pTmp, &pSrcDst}, vkArg::src);
        if (m_harmonic) {
            lenght.set(15, 50, 5, '+');
            return walk({&lenght});
        }
        if (m_residual) {
            lenght.set(40, 60, 10, '+');
            return walk({&lenght});
        }
        if (m_func.contains("ZeroStateResponse")) {
            lenght.set(40, 60, 10, '+');
            vkcRebuild(scale, "scaleFactor").set(12, 13, 1, '+');
            return walk({&lenght, &scale});
        }
        if (m_highPass) {
            lenght.set(40, 60, 10, '+');
            return walk({&lenght, &scaleFactor});
        }
        lenght.set(40, 60, 10, '+');
        vkcRebuild(i_mem, "i_mem").set(0, 1, 1, '+');
        return walk({&lenght, &i_mem, &scaleFactor});
    }

    bool makeData() override {
        // The harmonic filters read the lag before the pointer, the residual filter its order, and a subframe from
        // there on.
        const long long length = m_residual ? std::max(vkcSize(lenght), subframe) : vkcSize(lenght);
        past = m_harmonic ? T : m_residual ? std::max<long long>(lenght.value(), order) : 0;
        const long long size = past + length;
        // The memory of a synthesis filter is as long as its order.
        const bool made = pLPC.createVector(lenght_lpc.value(), setZero, 0, 0) &&
                          pSrc.createVector(size, setZero, 0, 0) && pDst.createVector(length, setZero, 0, 0) &&
                          pMem.createVector(std::max(length, vkcSize(lenght_lpc)), setZero, 0, 0) &&
                          pTmp.createVector(size, setZero, 0, 0) && pSrcDst.createVector(size, setZero, 0, 0) &&
                          setData();
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return lenght.value(); }

    virtual bool setData() {
        for (int i = 0; i < lenght_lpc.value(); ++i) {
            pLPC.setIndex(i, setValue, stableLpc[i], 0);
        }
        if (m_highPass) {
            veksHighPassFilterSize_G729(&fltSize);
            if (!hold(pMemUpdated, krMalloc(fltSize, 0, 0, MEM_OBJECT_IS_BUFFER), krFree)) {
                return false;
            }
            veksHighPassFilterInit_G729(pMemUpdated);
        }
        return true;
    }

private:
    const bool m_harmonic = m_func.contains("Harmonic");
    const bool m_residual = m_func.contains("Residual");
    const bool m_highPass = m_func.contains("HighPass");
};

} // namespace

VK_REG(TimFilt, veksHarmonicFilter_NR_16s,
       veksHarmonicFilter_NR_16s(beta, T, pSrc.m_16s + T, pDst.m_16s, lenght.value()))
VK_REG_I(TimFilt, veksHarmonicFilter_32f_I, veksHarmonicFilter_32f_I(T, pSrcDst.m_32f + T, lenght.value(), betaFloat),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG_I(TimFilt, veksHarmonicFilter_16s_I, veksHarmonicFilter_16s_I(beta, T, pSrcDst.m_16s + T, lenght.value()),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimFilt, veksResidualFilter_G729_16s, veksResidualFilter_G729_16s(pSrc.m_16s + past, pLPC.m_16s, pDst.m_16s))
VK_REG(TimFilt, veksSynthesisFilter_NR_16s_ISfs,
       veksSynthesisFilter_NR_16s_ISfs(pLPC.m_16s, pSrcDst.m_16s, lenght.value(), scaleFactor.value(), pMem.m_16s))
VK_REG(TimFilt, veksSynthesisFilterZeroStateResponse_NR_16s,
       veksSynthesisFilterZeroStateResponse_NR_16s(pLPC.m_16s, pDst.m_16s, lenght.value(), scale.value()))
VK_REG(TimFilt, veksSynthesisFilter_NR_16s_Sfs,
       veksSynthesisFilter_NR_16s_Sfs(pLPC.m_16s, pSrc.m_16s, pDst.m_16s, lenght.value(), scaleFactor.value(),
                                      pMem.m_16s))
VK_REG(TimFilt, veksSynthesisFilterLow_NR_16s_ISfs,
       veksSynthesisFilterLow_NR_16s_ISfs(pLPC.m_16s, pSrcDst.m_16s, lenght.value(), scaleFactor.value(), pMem.m_16s))
VK_REG_I(TimFilt, veksHighPassFilter_G729_16s_ISfs,
         veksHighPassFilter_G729_16s_ISfs(pSrcDst.m_16s, lenght.value(), scaleFactor.value(), pMemUpdated),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
