// Line spectral frequencies of G.723.1: from and to prediction coefficients, and decoded.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek;
using namespace vek::fix;
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

// Multiplies a polynomial by a further factor and halves it; size is the number of coefficients that it has.
void multiply(int32_t* f, int16_t c, int size) {
    f[size] = sat32(int64_t{f[size - 2]} + mulHigh(f[size - 1], c));
    for (int j = size - 1; j >= 2; --j) {
        f[j] = sat32(int64_t{mulHigh(f[j - 1], c)} + (f[j] >> 1) + (f[j - 2] >> 1));
    }
    f[0] >>= 1;
    f[1] = static_cast<int32_t>((int64_t{(c * 65536) >> (size - 1)} + f[1]) >> 1);
}

void toLpc(const Vek16s* lsf, Vek16s* lpc) {
    int16_t c[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        const auto step = static_cast<size_t>((lsf[i] >> 7) & 511);
        const int32_t rest = ((lsf[i] & 127) << 8) + 128;
        const int32_t value = g_cosine[step] * 65536 + (g_cosine[step + 1] - g_cosine[step]) * rest * 2;
        c[i] = negate(round_s(L_shl(value, 1)));
    }
    int32_t f[2][kHalf + 2];
    for (int k = 0; k < 2; ++k) {
        f[k][0] = 1 << 28;
        f[k][1] = (c[k] + c[k + 2]) * 16384;
        f[k][2] = sat32(int64_t{c[k]} * c[k + 2] + (int64_t{2} << 28));
        for (int i = 2; i < kHalf; ++i) {
            multiply(f[k], c[2 * i + k], i + 1);
        }
    }
    for (int i = 0; i < kHalf; ++i) {
        const int64_t even = int64_t{f[0][i + 1]} + f[0][i];
        const int64_t odd = int64_t{f[1][i + 1]} - f[1][i];
        lpc[i] = negate(round_s(sat32((even + odd) * 8)));
        lpc[kOrder - 1 - i] = negate(round_s(sat32((even - odd) * 8)));
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
