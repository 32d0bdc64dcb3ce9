// De-emphasis of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrcDst, pMem;
krStepIterator<int> len;

class TimDeemph_GSMFR_16s_I : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").set(100, 180, 10, '+');
        initVectors({&pSrcDst, &pMem}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pSrcDst.createVector(len.value(), setZero, 0, 0) && pMem.createVector(1, setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimDeemph_GSMFR_16s_I, veksDeemphasize_GSMFR_16s_I,
       veksDeemphasize_GSMFR_16s_I(pSrcDst.m_16s, len.value(), pMem.m_16s))
