// Pre-emphasis of G.729 and of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrcDst, pTmp, pMem, pSrc, pDst;
krStepIterator<int> lenght, len;
int dataSize;

constexpr Vek16s gamma_16s = 26214;
constexpr Vek32f gamma_32f = 0.8F;

class TimPreemph : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght").set(40, 80, 10, '+');
        initVectors({&pSrcDst, &pTmp, &pMem, &pSrc, &pDst}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        const bool made = pSrcDst.createVector(lenght.value(), setZero, 0, 0) &&
                          pTmp.createVector(lenght.value(), setValue, 10, 0) && pMem.createVector(1, setValue, 6, 0) &&
                          pSrc.createVector(lenght.value(), setValue, 10, 0) &&
                          pDst.createVector(lenght.value(), setZero, 0, 0);
        dataSize = pTmp.size();
        return made;
    }

    double getDivisor() override { return lenght.value(); }
};

class TimPreemphGSMFR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").set(100, 180, 10, '+');
        initVectors({&pSrc, &pDst, &pMem}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pSrc.createVector(len.value(), setValue, 1, 0) && pDst.createVector(len.value(), setZero, 0, 0) &&
               pMem.createVector(1, setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG_I(TimPreemph, veksPreemphasize_32f_I,
         veksPreemphasize_32f_I(pSrcDst.m_32f, lenght.value(), pMem.m_32f, gamma_32f),
         vkcRestore(pSrcDst.m_32f, pTmp.m_32f, dataSize))
VK_REG_I(TimPreemph, veksPreemphasize_G729A_16s_I,
         veksPreemphasize_G729A_16s_I(gamma_16s, pSrcDst.m_16s, lenght.value(), pMem.m_16s),
         vkcRestore(pSrcDst.m_16s, pTmp.m_16s, dataSize))
VK_REG(TimPreemph, veksPreemphasize_G729A_16s,
       veksPreemphasize_G729A_16s(gamma_16s, pSrc.m_16s, pDst.m_16s, lenght.value(), pMem.m_16s))
VK_REG(TimPreemphGSMFR, veksPreemphasize_GSMFR_16s,
       veksPreemphasize_GSMFR_16s(pSrc.m_16s, pDst.m_16s, len.value(), pMem.m_16s))
