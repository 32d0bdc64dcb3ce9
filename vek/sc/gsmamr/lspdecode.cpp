// Decoder of the line spectral frequencies of AMR, bad frames included, and the pairs of the four subframes.
#include <cstring>

#include "sc/common/signal_check.h"
#include "sc/gsmamr/linespectrum.h"
#include "veksc_gsmamrdtx.h"

namespace {

using namespace vek::gsmamr;

constexpr int kMostParts = 5;

// Rows of each part of the codebook; 0 where there is no part. A row of 12.2's third part has a sign behind it.
struct Sizes {
    int rows[kMostParts];
};

constexpr Sizes sizesOf(Rate rate) {
    switch (rate) {
    case Rate::R475:
    case Rate::R515:
        return {{256, 256, 128, 0, 0}};
    case Rate::R795:
        return {{512, 512, 512, 0, 0}};
    case Rate::R1220:
        return {{128, 256, 512, 256, 64}};
    case Rate::Dtx:
        return {{8, 256, 512, 512, 0}};
    default:
        return {{256, 512, 512, 0, 0}};
    }
}

bool indicesWithin(const Vek16s* index, Rate rate) {
    const Sizes sizes = sizesOf(rate);
    for (int part = 0; part < kMostParts && sizes.rows[part] > 0; ++part) {
        if (index[part] < 0 || index[part] >= sizes.rows[part]) {
            return false;
        }
    }
    return true;
}

// What is predicted of an element, without the mean.
Vek16s share(Rate rate, const Vek16s* residual, int i) {
    return rate == Rate::Dtx     ? residual[i]
           : rate == Rate::R1220 ? mult(residual[i], 21299)
                                 : mult(residual[i], kLsf3Predictor[i]);
}

// The last frequencies drawn towards their mean, and the residual that would have given them.
void conceal(Rate rate, const Vek16s* previous, Vek16s* residual, Vek16s* lsf) {
    const bool five = rate == Rate::R1220;
    const Vek16s* mean = five ? kLsf5Mean : kLsf3Mean;
    const Vek16s hold = five ? 31128 : 29491; // 0.95, 0.9
    const Vek16s draw = five ? 1639 : 3277;
    for (int i = 0; i < kOrder; ++i) {
        lsf[i] = add(mult(previous[i], hold), mult(mean[i], draw));
        residual[i] = sub(lsf[i], add(mean[i], share(rate, residual, i)));
    }
}

// A row of three elements has one more, which the next row covers. No sum of row, mean and prediction leaves 16 bits.
void decodeBy3(Rate rate, const Vek16s* index, Vek16s* residual, Vek16s* lsf) {
    constexpr size_t rowSize = 4 * sizeof(Vek16s);
    const bool lowest = rate == Rate::R475 || rate == Rate::R515;
    const bool noise = rate == Rate::Dtx;
    Vek16s predicted[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        const int share = noise ? kLsf3Start[index[0]][i] : (residual[i] * kLsf3Predictor[i]) >> 15;
        predicted[i] = static_cast<Vek16s>(kLsf3Mean[i] + share);
    }
    index += noise ? 1 : 0;
    std::memcpy(residual, (rate == Rate::R795 ? kLsf3Low795 : kLsf3Low)[index[0]], rowSize);
    std::memcpy(residual + 3, (lowest ? kLsf3MiddleHalf : kLsf3Middle)[index[1]], rowSize);
    std::memcpy(residual + 6, (lowest ? kLsf3High515 : kLsf3High)[index[2]], rowSize);
    for (int i = 0; i < kOrder; ++i) {
        lsf[i] = static_cast<Vek16s>(residual[i] + predicted[i]);
    }
}

void decodeBy5(const Vek16s* index, Vek16s* residual, Vek16s (*lsf)[kOrder]) {
    const Vek16s* rows[kMostParts] = {kLsf5Part1[index[0]], kLsf5Part2[index[1]], kLsf5Part3[index[2] >> 1],
                                      kLsf5Part4[index[3]], kLsf5Part5[index[4]]};
    for (int i = 0; i < kOrder; ++i) {
        const int part = i / 2;
        const bool turn = part == 2 && (index[2] & 1) != 0;
        const Vek16s predicted = add(kLsf5Mean[i], share(Rate::R1220, residual, i));
        const Vek16s first = rows[part][i % 2];
        const Vek16s second = rows[part][2 + i % 2];
        residual[i] = turn ? negate(second) : second;
        lsf[0][i] = add(turn ? negate(first) : first, predicted);
        lsf[1][i] = add(residual[i], predicted);
    }
}

// Halves of a and b, or a quarter of a and three quarters of b; neither leaves 16 bits.
Vek16s half(Vek16s a, Vek16s b) {
    return static_cast<Vek16s>((a >> 1) + (b >> 1));
}
Vek16s quarter(Vek16s a, Vek16s b) {
    return static_cast<Vek16s>((a >> 2) + (b - (b >> 2)));
}

} // namespace

VekStatus veksQuantLSPDecode_GSMAMR_16s(const Vek16s* pSrcIndex, Vek16s* pSrcDstPrevQLsfResidual,
                                        Vek16s* pSrcDstPrevQLsf, Vek16s* pSrcDstPrevQLsp, Vek16s* pDstQLsp, Vek16s bfi,
                                        VekSpchBitRate mode) {
    if (anyNull(pSrcIndex, pSrcDstPrevQLsfResidual, pSrcDstPrevQLsf, pSrcDstPrevQLsp, pDstQLsp)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    if (bfi < 0 || bfi > 1) {
        return vekStsRangeErr;
    }
    if (bfi == 0 && !indicesWithin(pSrcIndex, rate)) {
        return vekStsOutOfRangeErr;
    }
    Vek16s lsf[2][kOrder];
    if (bfi != 0) {
        conceal(rate, pSrcDstPrevQLsf, pSrcDstPrevQLsfResidual, lsf[1]);
        std::memcpy(lsf[0], lsf[1], sizeof lsf[0]);
    } else if (rate == Rate::R1220) {
        decodeBy5(pSrcIndex, pSrcDstPrevQLsfResidual, lsf);
    } else {
        decodeBy3(rate, pSrcIndex, pSrcDstPrevQLsfResidual, lsf[1]);
    }
    Vek16s lsp[2][kOrder];
    const bool twice = rate == Rate::R1220;
    for (int set = twice ? 0 : 1; set < 2; ++set) {
        keepApart<kOrder>(lsf[set], kLsfGap);
        lsfToLsp(lsf[set], lsp[set]);
    }
    Vek16s old[kOrder];
    std::memcpy(old, pSrcDstPrevQLsp, sizeof old);
    if (twice) {
        for (int i = 0; i < kOrder; ++i) {
            pDstQLsp[i] = half(lsp[0][i], old[i]);
            pDstQLsp[kOrder + i] = lsp[0][i];
            pDstQLsp[2 * kOrder + i] = half(lsp[0][i], lsp[1][i]);
        }
    } else {
        for (int i = 0; i < kOrder; ++i) {
            pDstQLsp[i] = quarter(lsp[1][i], old[i]);
            pDstQLsp[kOrder + i] = half(old[i], lsp[1][i]);
            pDstQLsp[2 * kOrder + i] = quarter(old[i], lsp[1][i]);
        }
    }
    std::memcpy(pDstQLsp + 3 * kOrder, lsp[1], sizeof lsp[1]);
    std::memcpy(pSrcDstPrevQLsf, lsf[1], sizeof lsf[1]);
    std::memcpy(pSrcDstPrevQLsp, lsp[1], sizeof lsp[1]);
    return vekStsNoErr;
}
