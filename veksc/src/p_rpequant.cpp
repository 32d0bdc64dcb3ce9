// Inverse block quantisation of GSM full rate.
#include "vkc.h"

namespace {

vkVector pSrc, pDst;
krStepIterator<int> len;

constexpr Vek16s ampl = 3;
constexpr Vek16s amplSfs = 2;

class TimRPEQuantDecode_GSMFR_16s : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "length").setList({13});
        initVectors({&pSrc, &pDst}, vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        return pSrc.createVector(m_grid.room(len), setZero, 0, 0) && pDst.createVector(m_grid.room(len), setZero, 0, 0);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimRPEQuantDecode_GSMFR_16s, veksRPEQuantDecode_GSMFR_16s,
       veksRPEQuantDecode_GSMFR_16s(pSrc.m_16s, ampl, amplSfs, pDst.m_16s))
