// Line spectral frequencies of G.723.1: from and to prediction coefficients, and decoded.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

#include "sc/common/linepairs.h"
#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

constexpr int kHalf = kOrder / 2;
constexpr int kCircle = 512;

// A period of the cosine and its first value again, Q14.
const std::array<int16_t, kCircle + 1> g_cosine = [] {
    std::array<int16_t, kCircle + 1> c{};
    for (int i = 0; i <= kCircle; ++i) {
        c[static_cast<size_t>(i)] =
            static_cast<int16_t>(std::lround(16384 * std::cos(2 * std::numbers::pi * i / kCircle)));
    }
    return c;
}();

// Negative cosines, Q22 with the half of the rounding to Q15: the value at the begin of each step, and how far it is to
// the next one in 256 parts.
struct CosineStep {
    int begin;
    int rise;
};
const std::array<CosineStep, kCircle> g_cosineSteps = [] {
    std::array<CosineStep, kCircle> steps{};
    for (size_t i = 0; i < steps.size(); ++i) {
        steps[i] = {63 - g_cosine[i] * 256, g_cosine[i] - g_cosine[i + 1]};
    }
    return steps;
}();

// Bounds of decoded frequencies.
constexpr int16_t kLowest = 0x180;
constexpr int16_t kHighest = 0x7e00;

// Powers of 0.994, Q15.
constexpr int16_t kExpansion[kOrder] = {32571, 32376, 32182, 31989, 31797, 31606, 31416, 31228, 31040, 30854};

// Value of a polynomial of cosines on step i of the grid; f[5] is the constant.
int32_t onGrid(const int16_t* f, int i) {
    int64_t sum = 0;
    for (int j = 0; j <= kHalf; ++j) {
        sum += f[kHalf - j] * g_cosine[static_cast<size_t>(i * j % kCircle)];
    }
    return sat32(sum * 2);
}

// Multiplies a polynomial by a further factor and halves it; Size is the number of coefficients that it has. No product
// of a coefficient of 32 bits leaves them, as no c is -32768.
template <int Size, class Sums>
inline void multiply(int64_t* f, int64_t c, Sums& sum) {
    f[Size] = sum.keep(f[Size - 2] + ((f[Size - 1] * c) >> 15));
#pragma GCC unroll 4
    for (int j = Size - 1; j >= 2; --j) {
        f[j] = sum.keep(((f[j - 1] * c) >> 15) + (f[j] >> 1) + (f[j - 2] >> 1));
    }
    f[0] >>= 1;
    f[1] = (((c * 65536) >> (Size - 1)) + f[1]) >> 1;
}

// The product over every second one of the negative cosines.
template <class Sums>
[[gnu::always_inline]] inline void product(const int64_t* c, int64_t* f, Sums& sum) {
    f[0] = 1 << 28;
    f[1] = (c[0] + c[2]) * 16384;
    f[2] = c[0] * c[2] + (2 << 28);
    multiply<3>(f, c[4], sum);
    multiply<4>(f, c[6], sum);
    multiply<5>(f, c[8], sum);
}

// Within 16 bits without -32768; hardly ever cut.
inline int64_t withinWord(int64_t v) {
    if (static_cast<uint64_t>(v + 32767) > 65534) [[unlikely]] {
        v = v < 0 ? -32767 : 32767;
    }
    return v;
}

// Rounded to 16 bits, sign turned.
inline Vek16s coefficient(int64_t sum) {
    return static_cast<Vek16s>(withinWord(-((sum * 8 + 0x8000) >> 16)));
}

template <class Sums>
inline void coefficients(const int64_t* c, Vek16s* lpc, Sums& sum) {
    int64_t f[2][kHalf + 1];
    product(c, f[0], sum);
    product(c + 1, f[1], sum);
#pragma GCC unroll 5
    for (int i = 0; i < kHalf; ++i) {
        const int64_t even = f[0][i + 1] + f[0][i];
        const int64_t odd = f[1][i + 1] - f[1][i];
        lpc[i] = coefficient(even + odd);
        lpc[kOrder - 1 - i] = coefficient(even - odd);
    }
}

void toLpc(const Vek16s* lsf, Vek16s* lpc) {
    int64_t c[kOrder];
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        const unsigned frequency = static_cast<uint16_t>(lsf[i]);
        const CosineStep& step = g_cosineSteps[frequency >> 7];
        // In the middle of the frequency's last bit, Q15.
        c[i] = withinWord((step.begin + step.rise * static_cast<int>((frequency & 127) * 2 + 1)) >> 7);
    }
    QuickSums quick;
    coefficients(c, lpc, quick);
    if (quick.used > kMax32) [[unlikely]] {
        SaturatingSums saturating;
        coefficients(c, lpc, saturating);
    }
}

// Whether all frequencies are in their bounds and have their distances.
bool apart(const int* lsf, int least) {
    int missing = (lsf[0] - kLowest) | (kHighest - lsf[kOrder - 1]);
#pragma GCC unroll 10
    for (int j = 1; j < kOrder; ++j) {
        missing |= lsf[j] - lsf[j - 1] - least;
    }
    return missing >= 0;
}

// Moves neighbours apart that are nearer than `least`; whether all are then, within 4.
bool spread(Vek16s* lsf, int least) {
    lsf[0] = lsf[0] < kLowest ? kLowest : lsf[0];
    lsf[kOrder - 1] = lsf[kOrder - 1] > kHighest ? kHighest : lsf[kOrder - 1];
    for (int j = 1; j < kOrder; ++j) {
        const int missing = least + lsf[j - 1] - lsf[j];
        if (missing > 0) {
            lsf[j - 1] = sat16(lsf[j - 1] - (missing >> 1));
            lsf[j] = sat16(lsf[j] + (missing >> 1));
        }
    }
    for (int j = 1; j < kOrder; ++j) {
        if (lsf[j - 1] + least - lsf[j] > 4) {
            return false;
        }
    }
    return true;
}

} // namespace

VekStatus veksLSFToLPC_G723_16s(const Vek16s* pSrcLsf, Vek16s* pDstLpc) {
    if (!pSrcLsf || !pDstLpc) {
        return vekStsNullPtrErr;
    }
    toLpc(pSrcLsf, pDstLpc);
    return vekStsNoErr;
}

VekStatus veksLSFToLPC_G723_16s_I(Vek16s* pSrcDst) {
    return veksLSFToLPC_G723_16s(pSrcDst, pSrcDst);
}

VekStatus veksLSFDecode_G723_16s(const Vek16s* quantIndex, const Vek16s* pPrevLSF, int erase, Vek16s* pQuantLSF) {
    if (!quantIndex || !pPrevLSF || !pQuantLSF) {
        return vekStsNullPtrErr;
    }
    if (erase < 0 || erase > 1) {
        return vekStsRangeErr;
    }
    int index[3] = {};
    for (int i = 0; i < 3 && erase == 0; ++i) {
        index[i] = quantIndex[i];
        if (index[i] < 0 || index[i] >= kLsfEntries) {
            return vekStsRangeErr;
        }
    }
    const int16_t prediction = erase ? 23552 : 12288;
    const int least = erase ? 512 : 256;
    int sums[kOrder];
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        const int residue = i < 3   ? kLsfBook0[i][index[0]]
                            : i < 6 ? kLsfBook1[i - 3][index[1]]
                                    : kLsfBook2[i - 6][index[2]];
        // A residue, 6012 at most, and a prediction have room in 16 bits.
        const int predicted = (sub(pPrevLSF[i], kLsfMean[i]) * prediction + 0x4000) >> 15;
        sums[i] = sat16(residue + predicted + kLsfMean[i]);
    }
    // As a rule they are apart, and then they are written one by one, which no later load waits for.
    if (apart(sums, least)) {
#pragma GCC unroll 10
        for (int i = 0; i < kOrder; ++i) {
            pQuantLSF[i] = static_cast<Vek16s>(sums[i]);
        }
        return vekStsNoErr;
    }
    Vek16s lsf[kOrder];
    std::copy_n(sums, kOrder, lsf);
    bool ordered = false;
    for (int round = 0; round < kOrder && !ordered; ++round) {
        ordered = spread(lsf, least);
    }
    std::memmove(pQuantLSF, ordered ? lsf : pPrevLSF, sizeof lsf);
    return ordered ? vekStsNoErr : vekStsUnstableFilter;
}

VekStatus veksLPCToLSF_G723_16s(const Vek16s* pSrcLpc, const Vek16s* pSrcPrevLsf, Vek16s* pDstLsf) {
    if (!pSrcLpc || !pSrcPrevLsf || !pDstLsf) {
        return vekStsNullPtrErr;
    }
    Vek16s a[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        a[i] = mult_r(pSrcLpc[i], kExpansion[i]);
    }
    // Sum and difference polynomials without their roots at 1 and -1, Q25; the middle coefficient halved.
    int32_t wide[2][kHalf + 1];
    wide[0][0] = wide[1][0] = 1 << 25;
    int32_t most = 1 << 25;
    for (int i = 0; i < kHalf; ++i) {
        wide[0][i + 1] = -wide[0][i] - (a[i] + a[kOrder - 1 - i]) * 4096;
        wide[1][i + 1] = wide[1][i] - (a[i] - a[kOrder - 1 - i]) * 4096;
    }
    for (int32_t* w : wide) {
        w[kHalf] >>= 1;
        for (int i = 0; i <= kHalf; ++i) {
            most = L_abs(w[i]) > most ? L_abs(w[i]) : most;
        }
    }
    const int16_t shift = norm_l(most);
    int16_t f[2][kHalf + 1];
    for (int k = 0; k < 2; ++k) {
        for (int i = 0; i <= kHalf; ++i) {
            f[k][i] = round_s(L_shl(wide[k][i], shift));
        }
    }
    Vek16s lsf[kOrder];
    int count = 0;
    int which = 0;
    int32_t last = onGrid(f[0], 0);
    for (int i = 1; i < kCircle / 2 && count < kOrder; ++i) {
        int32_t now = onGrid(f[which], i);
        if ((now ^ last) < 0) {
            const int32_t span = L_add(L_abs(now), L_abs(last));
            const int16_t n = norm_l(span);
            const int32_t part = L_shl(L_abs(last), n) >> 8;
            lsf[count++] = static_cast<Vek16s>((i - 1) * 128 + (part >> 1) / (L_shl(span, n) >> 16));
            which ^= 1;
            now = onGrid(f[which], i);
        }
        last = now;
    }
    std::memmove(pDstLsf, count == kOrder ? lsf : pSrcPrevLsf, sizeof lsf);
    return vekStsNoErr;
}
