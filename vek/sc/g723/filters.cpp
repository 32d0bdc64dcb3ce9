// Filters of G.723.1 of low order, harmonic noise shaping and gain control.

#include "sc/g723/tables.h"
#include "sc/kernels/corr.h"
#include "veksc_g723.h"

using namespace vek::g723;

VekStatus veksHighPassFilter_G723_16s(const Vek16s* pSrc, Vek16s* pDst, Vek32s* pMem) {
    if (!pSrc || !pDst || !pMem) {
        return vekStsNullPtrErr;
    }
    int16_t last = sat16(pMem[0]);
    int32_t sum = pMem[1];
    for (int i = 0; i < kFrame; ++i) {
        const int32_t step = (pSrc[i] - last) * 16384;
        last = pSrc[i];
        sum = L_add(L_shl(step, 1), mulHigh(sum, 0x7f00));
        pDst[i] = round_s(sum);
    }
    pMem[0] = last;
    pMem[1] = sum;
    return vekStsNoErr;
}

VekStatus veksHarmonicNoiseSubtract_G723_16s_I(Vek16s val, int T, const Vek16s* pSrc_H, Vek16s* pSrcDst) {
    if (!pSrc_H || !pSrcDst) {
        return vekStsNullPtrErr;
    }
    if (T < 1 || T > kHistory) {
        return vekStsRangeErr;
    }
    for (int i = 0; i < kSubframe; ++i) {
        const int64_t sum = (int64_t{pSrcDst[i]} - pSrc_H[i]) * 32768 + val * pSrc_H[i - T];
        pSrcDst[i] = sat16_64((sum + 0x4000) >> 15);
    }
    return vekStsNoErr;
}

VekStatus veksTiltCompensation_G723_32s16s(Vek16s val, const Vek32s* pSrc, Vek16s* pDst) {
    if (!pSrc || !pDst) {
        return vekStsNullPtrErr;
    }
    for (int i = 0; i < kSubframe; ++i) {
        pDst[i] = mac_r(pSrc[i + 1], val, round_s(pSrc[i]));
    }
    return vekStsNoErr;
}

VekStatus veksGainControl_G723_16s_I(Vek32s energy, Vek16s* pSrcDst, Vek16s* pSrcDstGain) {
    if (!pSrcDst || !pSrcDstGain) {
        return vekStsNullPtrErr;
    }
    if (energy < 0) {
        return vekStsRangeErr;
    }
    int16_t quarter[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        quarter[i] = static_cast<int16_t>(pSrcDst[i] >> 2);
    }
    const int32_t own = sat32(2 * corrKernels().dot16(quarter, quarter, kSubframe));
    int target = 1 << 12;
    if (energy != 0 && own != 0) {
        const int up = norm_l(energy);
        const int ownUp = norm_l(own);
        const int difference = 5 + up - ownUp;
        const int down = difference < 0 ? 0 : difference > 31 ? 31 : difference;
        const auto ratio = static_cast<uint32_t>((L_shl(energy, up) >> 2) / (L_shl(own, ownUp) >> 16));
        target = rootOfHalf((ratio << 16) >> down);
    }
    int gain = *pSrcDstGain;
    for (int i = 0; i < kSubframe; ++i) {
        gain = sat16((15 * gain + target + 8) >> 4);
        pSrcDst[i] = sat16_64((int64_t{pSrcDst[i]} * (gain + (gain >> 4)) + 1024) >> 11);
    }
    *pSrcDstGain = static_cast<Vek16s>(gain);
    return vekStsNoErr;
}
