// The filtered excitation of the next delay, in floating point.
#include "vkc.h"

namespace {

vkVector pSrc, pSrcDst;
krStepIterator<int> lenght;

constexpr Vek32f val = 0.5F;

class TimMathfp : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lenght, "lenght");
        if (m_func.contains("FilteredExcitation")) {
            lenght.set(80, 90, 1, '+');
        } else {
            lenght.set(10, 40, 10, '+');
        }
        initVectors({&pSrc, &pSrcDst}, vkArg::src);
        return walk({&lenght});
    }

    bool makeData() override {
        return pSrc.createVector(lenght.value(), setOne, 0, 0) && pSrcDst.createVector(lenght.value(), setZero, 0, 0);
    }

    double getDivisor() override { return lenght.value(); }
};

} // namespace

VK_REG(TimMathfp, veksFilteredExcitation_G729_32f,
       veksFilteredExcitation_G729_32f(pSrc.m_32f, pSrcDst.m_32f, lenght.value(), val))
