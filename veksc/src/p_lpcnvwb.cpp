// Conversions of the wide-band codec's spectra, and the gain of its adaptive codebook.
#include "vkc.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace {

vkVector pSrcAdptTarget, pSrcFltAdptVector, pDstGainCoeff, pSrcIsp, pDstIsf, pDstLpc, pSrcIsf, pDstIsp, pSrcLpc,
    pSrcPrevIsp;
krStepIterator<int> len;
Vek16s pResultAdptGain;

// Falling coefficients above zero make a stable filter.
void SortLPC_AMRWB(short* data, int first, int last) {
    std::transform(data + first, data + last, data + first,
                   [](short v) { return static_cast<short>(std::abs(int{v})); });
    std::sort(data + first, data + last, std::greater<>());
}

void SetValue_AMRWB(short value, short* data, int n) {
    std::fill_n(data, n, value);
}

// Evenly spaced values: from zero up over the span, or from one half of it down to the other.
void SetData_AMRWB(long long span, short* data, int n) {
    const long long first = span < 0 ? -span / 2 : 0;
    for (int i = 0; i < n; ++i) {
        data[i] = static_cast<short>(first + span * (i + 1) / (n + 1LL));
    }
}

class TimLPCnvwb : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "len");
        if (m_gain) {
            len.set(32, 128, 32, '+');
        } else if (m_fromLpc) {
            len.setList({17});
        } else if (m_func.contains("ISPToISF")) {
            len.setList({16});
        } else {
            len.set(16, 21, 4, '+');
        }
        initVectors({&pSrcAdptTarget, &pSrcFltAdptVector, &pDstGainCoeff, &pSrcIsp, &pDstIsf, &pDstLpc, &pSrcIsf,
                     &pDstIsp, &pSrcLpc, &pSrcPrevIsp},
                    vkArg::src);
        return walk({&len});
    }

    bool makeData() override {
        constexpr int spectrum = 16;
        if (m_gain) {
            return pSrcAdptTarget.createVector(m_grid.room(len), setRand, -8192, 8192) &&
                   pSrcFltAdptVector.createVector(m_grid.room(len), setRand, -8192, 8192) &&
                   pDstGainCoeff.createVector(4, setZero, 0, 0);
        }
        if (m_fromLpc) {
            if (!pSrcLpc.createVector(spectrum + 1, setRand, -4096, 4096) ||
                !pDstIsp.createVector(spectrum, setZero, 0, 0) ||
                !pSrcPrevIsp.createVector(spectrum, setRand, -4096, 4096)) {
                return false;
            }
            SetValue_AMRWB(4096, pSrcLpc.m_16s, 1);
            SortLPC_AMRWB(pSrcLpc.m_16s, 1, spectrum + 1);
            return true;
        }
        // A filter has a coefficient more than its order.
        if (!pSrcIsp.createVector(m_grid.room(len), setZero, 0, 0) ||
            !pDstIsf.createVector(m_grid.room(len), setZero, 0, 0) ||
            !pDstLpc.createVector(m_grid.room(len) + 1, setZero, 0, 0) ||
            !pSrcIsf.createVector(m_grid.room(len), setZero, 0, 0) ||
            !pDstIsp.createVector(m_grid.room(len), setZero, 0, 0)) {
            return false;
        }
        SetData_AMRWB(-64000, pSrcIsp.m_16s, len.value());
        SetData_AMRWB(16384, pSrcIsf.m_16s, len.value());
        return true;
    }

    double getDivisor() override { return len.value(); }

private:
    const bool m_gain = m_func.contains("AdaptiveCodebookGainCoeff");
    const bool m_fromLpc = m_func.contains("LPCToISP");
};

} // namespace

VK_REG(TimLPCnvwb, veksAdaptiveCodebookGainCoeff_AMRWB_16s,
       veksAdaptiveCodebookGainCoeff_AMRWB_16s(pSrcAdptTarget.m_16s, pSrcFltAdptVector.m_16s, pDstGainCoeff.m_16s,
                                               &pResultAdptGain, len.value()))
VK_REG(TimLPCnvwb, veksISPToISF_Norm_AMRWB_16s, veksISPToISF_Norm_AMRWB_16s(pSrcIsp.m_16s, pDstIsf.m_16s, len.value()))
VK_REG(TimLPCnvwb, veksISPToLPC_AMRWB_16s, veksISPToLPC_AMRWB_16s(pSrcIsp.m_16s, pDstLpc.m_16s, len.value()))
VK_REG(TimLPCnvwb, veksISFToISP_AMRWB_16s, veksISFToISP_AMRWB_16s(pSrcIsf.m_16s, pDstIsp.m_16s, len.value()))
VK_REG(TimLPCnvwb, veksLPCToISP_AMRWB_16s, veksLPCToISP_AMRWB_16s(pSrcLpc.m_16s, pDstIsp.m_16s, pSrcPrevIsp.m_16s))
