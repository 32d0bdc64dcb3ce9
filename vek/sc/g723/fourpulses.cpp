// Fixed codebook of G.723.1 at 5.3 kbit/s: four pulses on four tracks, two grids.
#include <algorithm>
#include <cstring>

#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

constexpr int kTracks = 4;
constexpr int kLanes = 8;
constexpr int kPlain = 120;
constexpr int kMostLeft = 30000;

// Signs are taken out of all of it; sums fit 32 bits, their squares times energies the mantissa of a double but for the
// lowest bits.
struct Field {
    int32_t sign[kTracks][kLanes];
    int32_t corr[2][kTracks][kLanes];
    double energy[kTracks][kLanes];
    double cross[6][kLanes][kLanes];
};

template <typename Element>
void prepare(const Vek16s* corr, const Element* matrix, Field& f) {
    for (int t = 0; t < kTracks; ++t) {
        for (int k = 0; k < kLanes; ++k) {
            const int32_t even = corr[8 * k + 2 * t];
            const int32_t odd = corr[8 * k + 2 * t + 1];
            const int32_t larger = (even < 0 ? -even : even) > (odd < 0 ? -odd : odd) ? even : odd;
            const int32_t sign = larger < 0 ? -1 : 1;
            f.sign[t][k] = sign;
            f.corr[0][t][k] = sign * even;
            f.corr[1][t][k] = sign * odd;
            f.energy[t][k] = matrix[t * kLanes + k];
        }
    }
    const Element* block = matrix + kTracks * kLanes;
    int pair = 0;
    for (int t = 0; t < kTracks; ++t) {
        for (int u = t + 1; u < kTracks; ++u, ++pair, block += kLanes * kLanes) {
            for (int k = 0; k < kLanes; ++k) {
                for (int l = 0; l < kLanes; ++l) {
                    f.cross[pair][k][l] = 2.0 * f.sign[t][k] * f.sign[u][l] * block[kLanes * k + l];
                }
            }
        }
    }
}

// The middle of mean and maximum of what three pulses can reach.
int32_t thresholdOf(const Field& f) {
    int32_t mostSum = 0;
    int32_t sum = 0;
    for (int t = 0; t < kTracks - 1; ++t) {
        int32_t most = 0;
        for (int k = 0; k < kLanes; ++k) {
            const int32_t larger = f.corr[0][t][k] > f.corr[1][t][k] ? f.corr[0][t][k] : f.corr[1][t][k];
            most = larger > most ? larger : most;
            sum += larger;
        }
        mostSum += most;
    }
    return (mostSum + sum / kLanes) >> 1;
}

struct Found {
    int lanes[kTracks] = {};
    int grid = 0;
    double square = -1;
    double energy = 1;
};

Found search(const Field& f, int& times) {
    Found best;
    const int32_t threshold = thresholdOf(f);
    for (int i = 0; i < kLanes; ++i) {
        for (int j = 0; j < kLanes; ++j) {
            const double pair = f.energy[0][i] + f.energy[1][j] + f.cross[0][i][j];
            for (int k = 0; k < kLanes; ++k) {
                const int32_t even = f.corr[0][0][i] + f.corr[0][1][j] + f.corr[0][2][k];
                const int32_t odd = f.corr[1][0][i] + f.corr[1][1][j] + f.corr[1][2][k];
                if ((even > odd ? even : odd) < threshold) {
                    continue;
                }
                const double three = pair + f.energy[2][k] + f.cross[1][i][k] + f.cross[3][j][k];
                for (int l = 0; l < kLanes; ++l) {
                    const int32_t evenSum = even + f.corr[0][3][l];
                    const int32_t oddSum = odd + f.corr[1][3][l];
                    const int32_t sum = evenSum >= oddSum ? evenSum : oddSum;
                    const double energy =
                        three + f.energy[3][l] + f.cross[2][i][l] + f.cross[4][j][l] + f.cross[5][k][l];
                    const double square = sum > 0 ? static_cast<double>(sum) * sum : 0;
                    if (energy > 0 && square * best.energy > best.square * energy) {
                        best = {{i, j, k, l}, evenSum >= oddSum ? 0 : 1, square, energy};
                    }
                }
                if (--times <= 0) {
                    return best;
                }
            }
        }
    }
    return best;
}

template <typename Element>
VekStatus fourPulses(const Vek16s* pSrcFixedCorr, const Element* pSrcMatrix, Vek16s* pDstFixedSign,
                     Vek16s* pDstFixedPosition, Vek16s* pDstGrid, Vek16s* pDstFixedVector, Vek16s* pSearchTimes) {
    if (!pSrcFixedCorr || !pSrcMatrix || !pDstFixedSign || !pDstFixedPosition || !pDstGrid || !pDstFixedVector ||
        !pSearchTimes) {
        return vekStsNullPtrErr;
    }
    if (*pSearchTimes < 0 || *pSearchTimes > kMostLeft) {
        return vekStsRangeErr;
    }
    Field f;
    prepare(pSrcFixedCorr, pSrcMatrix, f);
    int times = kPlain + *pSearchTimes;
    const Found found = search(f, times);
    Vek16s vector[kTracks * kLanes * 2] = {};
    int signs = 0;
    int positions = 0;
    for (int t = 0; t < kTracks; ++t) {
        const int lane = found.lanes[t];
        vector[8 * lane + 2 * t + found.grid] = static_cast<Vek16s>(f.sign[t][lane]);
        positions |= lane << (3 * t);
        signs |= (f.sign[t][lane] > 0 ? 1 : 0) << t;
    }
    std::memcpy(pDstFixedVector, vector, kSubframe * sizeof(Vek16s));
    *pDstFixedSign = static_cast<Vek16s>(signs);
    *pDstFixedPosition = static_cast<Vek16s>(positions);
    *pDstGrid = static_cast<Vek16s>(found.grid);
    *pSearchTimes = static_cast<Vek16s>(std::min(times, kMostLeft));
    return vekStsNoErr;
}

} // namespace

VekStatus veksACELPFixedCodebookSearch_G723_16s(const Vek16s* pSrcFixedCorr, const Vek16s* pSrcMatrix,
                                                Vek16s* pDstFixedSign, Vek16s* pDstFixedPosition, Vek16s* pDstGrid,
                                                Vek16s* pDstFixedVector, Vek16s* pSearchTimes) {
    return fourPulses(pSrcFixedCorr, pSrcMatrix, pDstFixedSign, pDstFixedPosition, pDstGrid, pDstFixedVector,
                      pSearchTimes);
}

VekStatus veksACELPFixedCodebookSearch_G723_32s16s(const Vek16s* pSrcFixedCorr, const Vek32s* pSrcMatrix,
                                                   Vek16s* pDstFixedSign, Vek16s* pDstFixedPosition, Vek16s* pDstGrid,
                                                   Vek16s* pDstFixedVector, Vek16s* pSearchTimes) {
    return fourPulses(pSrcFixedCorr, pSrcMatrix, pDstFixedSign, pDstFixedPosition, pDstGrid, pDstFixedVector,
                      pSearchTimes);
}
