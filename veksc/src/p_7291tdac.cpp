// Transform coding of G.729.1: lapped transform, its quantiser and post-processing.
#include "vkc.h"

namespace {

vkVector pSrc, pDst, pSrcDst, pQuantSpecEnv, pBitsNumber, pMDCTCoeffs, pMDCTPrevCoeffs;
krStepIterator<int> len, rate, normFactor;
int pNormFactor;

constexpr int coefficients = 320;

class Tim7291TDAC : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        const int size = m_quantInv || m_quantFwd ? 18 : 160;
        vkcRebuild(len, "len").setList({size});
        vkcFix(rate, 0);
        vkcFix(normFactor, 1);
        initVectors({&pSrc}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        initVectors({&pSrcDst, &pQuantSpecEnv, &pBitsNumber, &pMDCTCoeffs, &pMDCTPrevCoeffs}, vk16s);
        if (m_post) {
            vkcRebuild(rate, "numBits").set(0, 11, 1, '+');
            return walk({&len, &rate});
        }
        if (m_inverse) {
            vkcRebuild(normFactor, "normFactor").set(1, 2, 1, '+');
            return walk({&len, &normFactor});
        }
        return walk({&len});
    }

    bool makeData() override {
        const long long size = m_grid.room(len);
        if (m_quantInv) {
            return pSrc.createVector(size, setRand, 0, 32767) &&
                   pQuantSpecEnv.createVector(size, setRand, -32768, 32767) &&
                   pBitsNumber.createVector(size, setRand, 0, 16) &&
                   pMDCTCoeffs.createVector(coefficients, setZero, 0, 0);
        }
        if (m_quantFwd) {
            return pMDCTCoeffs.createVector(coefficients, setRand, -512, 512) &&
                   pBitsNumber.createVector(size, setRand, 0, 16) && pDst.createVector(size, setZero, 0, 0);
        }
        if (m_post) {
            return pMDCTCoeffs.createVector(size, setRand, -512, 512);
        }
        if (m_inverse) {
            return pMDCTCoeffs.createVector(size, setRand, -512, 512) &&
                   pMDCTPrevCoeffs.createVector(size, setRand, -512, 512) && pDst.createVector(size, setZero, 0, 0);
        }
        return pSrc.createVector(size, setRand, -2048, 2048) && pSrcDst.createVector(size, setRand, -2048, 2048) &&
               pMDCTCoeffs.createVector(size, setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }

private:
    const bool m_quantInv = m_func.contains("veksMDCTQuantInv_G7291_32u16s");
    const bool m_quantFwd = m_func.contains("veksMDCTQuantFwd_G7291_16s32u");
    const bool m_post = m_func.contains("veksMDCTPostProcess_G7291_16s");
    const bool m_inverse = m_func.contains("veksMDCTInv_G7291_16s");
};

} // namespace

VK_REG(Tim7291TDAC, veksMDCTFwd_G7291_16s,
       veksMDCTFwd_G7291_16s(pSrc.m_16s, pSrcDst.m_16s, &pNormFactor, pMDCTCoeffs.m_16s, 2))
VK_REG(Tim7291TDAC, veksMDCTInv_G7291_16s,
       veksMDCTInv_G7291_16s(pMDCTCoeffs.m_16s, pMDCTPrevCoeffs.m_16s, pDst.m_16s, normFactor.value()))
VK_REG(Tim7291TDAC, veksMDCTPostProcess_G7291_16s, veksMDCTPostProcess_G7291_16s(pMDCTCoeffs.m_16s, rate.value()))
VK_REG(Tim7291TDAC, veksMDCTQuantFwd_G7291_16s32u,
       veksMDCTQuantFwd_G7291_16s32u(pMDCTCoeffs.m_16s, pBitsNumber.m_16s, pDst.m_32u))
VK_REG(Tim7291TDAC, veksMDCTQuantInv_G7291_32u16s,
       veksMDCTQuantInv_G7291_32u16s(pSrc.m_32u, pBitsNumber.m_16s, pQuantSpecEnv.m_16s, pMDCTCoeffs.m_16s))
