// Schur recursion of GSM full rate.
#include "vkc.h"

#include <algorithm>

namespace {

vkVector pSrc1, pDst;
krStepIterator<int> lengthDst;

// The autocorrelation of the longest recursion but for its last lag, as halves of 32-bit words, low ones first.
constexpr Vek16s halves[] = {1754, 2064, 48, 1402, -50, 1172, 286, 944, -82, 698, 140, 486, 52, 240, 398, 116};

class TimSchurGSMFR : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(lengthDst, "length Dst").set(4, 8, 2, '+');
        initVectors({&pSrc1}, vkArg::src);
        initVectors({&pDst}, vkArg::dst);
        return walk({&lengthDst});
    }

    bool makeData() override {
        // Lag 0 comes on top of the lags of the coefficients.
        if (!pSrc1.createVector(vkcSize(lengthDst) + 1, setZero, 0, 0) ||
            !pDst.createVector(lengthDst.value(), setZero, 0, 0)) {
            return false;
        }
        setData();
        return true;
    }

    double getDivisor() override { return static_cast<double>(lengthDst.value()) * lengthDst.value(); }

    virtual void setData() {
        std::memcpy(pSrc1.m_32s, halves, std::min(sizeof halves, static_cast<std::size_t>(pSrc1.size())));
    }
};

} // namespace

VK_REG(TimSchurGSMFR, veksSchur_GSMFR_32s16s, veksSchur_GSMFR_32s16s(pSrc1.m_32s, pDst.m_16s, lengthDst.value()))
