// Quantiser of the eight immittance spectral frequencies of the high band: a prediction by half the last residual, two
// bits for the mean of the residual and seven for its shape. The code vectors follow a rule (see `books`).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwbe.h"

using namespace vek;

namespace {

constexpr int kOrder = 8;
constexpr int kFirst = 4;
constexpr int kSecond = 128;
constexpr int kTop = 16384;    // 6400 Hz
constexpr int kDistance = 128; // 50 Hz

struct Books {
    std::array<int16_t, kOrder> mean;
    std::array<int16_t, kFirst> first; // the same for all elements
    std::array<std::array<int16_t, kOrder>, kSecond> second;
};

// Means: evenly spread, from 1 to 8 ninths of the band (mode 0) or from 1 to 15 sixteenths (mode 1). Residuals: sums of
// the eight cosines cos(pi b (i + 1/2) / 8). The first one takes -3, -1, 1, 3 times 300, the one of order b > 0 plus
// (its bit set) or minus 600 / (b + 1); in mode 1 three quarters of that.
Books books(int mode) {
    Books t{};
    const double scale = mode == 0 ? 1.0 : 0.75;
    for (int i = 0; i < kOrder; ++i) {
        const double place = mode == 0 ? (i + 1) / 9.0 : (i + 0.5) / 8.0;
        t.mean[static_cast<size_t>(i)] = static_cast<int16_t>(std::lround(kTop * place));
    }
    for (int c = 0; c < kFirst; ++c) {
        t.first[static_cast<size_t>(c)] = static_cast<int16_t>(std::lround((2 * c - 3) * 300 * scale));
    }
    for (int c = 0; c < kSecond; ++c) {
        for (int i = 0; i < kOrder; ++i) {
            double sum = 0;
            for (int b = 1; b < kOrder; ++b) {
                const double wave = std::cos(std::numbers::pi * b * (i + 0.5) / kOrder) * 600 / (b + 1) * scale;
                sum += (c >> (b - 1) & 1) != 0 ? wave : -wave;
            }
            t.second[static_cast<size_t>(c)][static_cast<size_t>(i)] = static_cast<int16_t>(std::lround(sum));
        }
    }
    return t;
}

const Books g_books[2] = {books(0), books(1)};

// Ascending with a least distance, within the band.
void order(Vek16s* isf) {
    int floor = kDistance;
    for (int i = 0; i < kOrder; ++i) {
        isf[i] = static_cast<Vek16s>(std::max<int>(isf[i], floor));
        isf[i] = static_cast<Vek16s>(std::min<int>(isf[i], kTop - kDistance * (kOrder - i)));
        floor = isf[i] + kDistance;
    }
}

// Mean, prediction and code vectors together; the past becomes the code vectors' sum.
void rebuild(const Books& t, int first, int second, Vek16s* isf, Vek16s* past) {
    for (size_t i = 0; i < kOrder; ++i) {
        const auto residual =
            static_cast<Vek16s>(t.first[static_cast<size_t>(first)] + t.second[static_cast<size_t>(second)][i]);
        isf[i] = fix::sat16(t.mean[i] + residual + (past[i] >> 1));
        past[i] = residual;
    }
    order(isf);
}

} // namespace

VekStatus veksISFQuantHighBand_AMRWBE_16s(const Vek16s* pSrcIsf, Vek16s* pDstQIsf, Vek16s* pSrcDstPastResidual,
                                          Vek16s* pDstQIsfIndex, int mode) {
    if (anyNull(pSrcIsf, pDstQIsf, pSrcDstPastResidual, pDstQIsfIndex)) {
        return vekStsNullPtrErr;
    }
    if (mode < 0 || mode > 1) {
        return vekStsRangeErr;
    }
    const Books& t = g_books[mode];
    int target[kOrder];
    for (size_t i = 0; i < kOrder; ++i) {
        target[i] = pSrcIsf[i] - t.mean[i] - (pSrcDstPastResidual[i] >> 1);
    }
    int64_t best = INT64_MAX;
    int first = 0;
    int second = 0;
    for (int a = 0; a < kFirst; ++a) {
        for (int b = 0; b < kSecond; ++b) {
            int64_t distance = 0;
            for (size_t i = 0; i < kOrder; ++i) {
                const int64_t d = target[i] - t.first[static_cast<size_t>(a)] - t.second[static_cast<size_t>(b)][i];
                distance += d * d;
            }
            if (distance < best) {
                best = distance;
                first = a;
                second = b;
            }
        }
    }
    rebuild(t, first, second, pDstQIsf, pSrcDstPastResidual);
    pDstQIsfIndex[0] = static_cast<Vek16s>(first);
    pDstQIsfIndex[1] = static_cast<Vek16s>(second);
    return vekStsNoErr;
}

VekStatus veksISFQuantDecodeHighBand_AMRWBE_16s(const Vek16s* pSrcIdxs, Vek16s* pSrcDstQIsf,
                                                Vek16s* pSrcDstPastResidual, int bfi, int mode) {
    if (anyNull(pSrcIdxs, pSrcDstQIsf, pSrcDstPastResidual)) {
        return vekStsNullPtrErr;
    }
    if (mode < 0 || mode > 1 || bfi < 0 || bfi > 1) {
        return vekStsRangeErr;
    }
    const Books& t = g_books[mode];
    if (bfi == 0) {
        if (pSrcIdxs[0] < 0 || pSrcIdxs[0] >= kFirst || pSrcIdxs[1] < 0 || pSrcIdxs[1] >= kSecond) {
            return vekStsRangeErr;
        }
        rebuild(t, pSrcIdxs[0], pSrcIdxs[1], pSrcDstQIsf, pSrcDstPastResidual);
        return vekStsNoErr;
    }
    // A lost frame moves a tenth of the way to the mean, and the prediction learns half of what it would have said.
    for (size_t i = 0; i < kOrder; ++i) {
        pSrcDstQIsf[i] = static_cast<Vek16s>((29491 * pSrcDstQIsf[i] + 3277 * t.mean[i] + 16384) >> 15);
    }
    order(pSrcDstQIsf);
    for (size_t i = 0; i < kOrder; ++i) {
        const int residual = pSrcDstQIsf[i] - t.mean[i] - (pSrcDstPastResidual[i] >> 1);
        pSrcDstPastResidual[i] = fix::sat16(residual / 2);
    }
    return vekStsNoErr;
}
