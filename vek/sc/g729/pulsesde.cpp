// Pulse searches of G.729 Annex D (two pulses) and Annex E (ten and twelve), with their codewords.
#include <algorithm>
#include <array>
#include <type_traits>
#include <utility>

#include "sc/common/fixmath.h"
#include "sc/common/pulsesearch.h"
#include "sc/common/signal_check.h"
#include "sc/g729/floatpulses.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/fourpulses.h"
#include "veksc_g729code.h"

namespace {

using namespace vek::pulses;
using g729::kSubframe;
using g729::kTracks;

// Annex D: the positions of the two pulses by their codes, neighbours differing in one bit.
constexpr int kFirstPositions[kFirstCodes] = {1, 3, 8, 6, 18, 16, 11, 13, 38, 36, 31, 33, 21, 23, 28, 26};
constexpr int kSecondPositions[kSecondCodes] = {0,  2,  5,  4,  12, 10, 7,  9,  25, 24, 20, 22, 14, 15, 19, 17,
                                                36, 31, 21, 26, 1,  6,  16, 11, 27, 29, 32, 30, 39, 37, 34, 35};

// Adds the response from `position` on, with a sign.
using pulses::addResponse;
void addResponse(const Vek32f* h, int position, bool plus, Vek32f* y) {
    for (int i = position; i < kSubframe; ++i) {
        y[i] += plus ? h[i - position] : -h[i - position];
    }
}

struct TwoPulses {
    int first = 0; // codes
    int second = 0;

    int index() const { return first + kFirstCodes * second; }
};

// Magnitudes of the correlations, and what the matrix holds, in the order of the codes.
struct CodedField {
    float firstD[kFirstCodes];
    float firstEnergy[kFirstCodes];
    float secondD[kSecondCodes];
    float secondEnergy[kSecondCodes];
    float cross[kFirstCodes * kSecondCodes];

    // energy(i) is that of a pulse at i.
    template <class Value, class Energy>
    CodedField(const Value* d, Energy energy) {
        const auto take = [&](const auto& positions, int codes, float* correlations, float* energies) {
            for (int n = 0; n < codes; ++n) {
                correlations[n] = static_cast<float>(d[positions[n]]);
                energies[n] = static_cast<float>(energy(positions[n]));
            }
        };
        take(kFirstPositions, kFirstCodes, firstD, firstEnergy);
        take(kSecondPositions, kSecondCodes, secondD, secondEnergy);
    }

    TwoPulses search() const {
        const int code = fourPulseKernels().pairOfCodes(firstD, firstEnergy, secondD, secondEnergy, cross);
        return {code % kFirstCodes, code / kFirstCodes};
    }
};

template <class Value, class Sign>
int deliverTwo(const TwoPulses& two, const Sign* sign, const Value* h, Value* code, Value* filtered) {
    std::fill_n(code, kSubframe, Value{0});
    std::fill_n(filtered, kSubframe, Value{0});
    int signs = 0;
    const int positions[] = {kFirstPositions[two.first], kSecondPositions[two.second]};
    for (int n = 0; n < 2; ++n) {
        const int at = positions[n];
        if constexpr (std::is_same_v<Value, Vek32f>) {
            code[at] += sign[at] > 0 ? 1.0F : -1.0F;
        } else {
            code[at] = static_cast<Value>(code[at] + (sign[at] > 0 ? 8191 : -8192));
        }
        signs |= sign[at] > 0 ? 1 << n : 0;
        addResponse(h, at, sign[at] > 0, filtered);
    }
    return signs;
}

constexpr int kMostOnTrack = 3;

// Annex E: the pulses of a track as a word. They stand in the one order, or one of the orders, in which a pulse lies
// below the one before it exactly where the sign changes; there is such an order for up to three pulses.
template <class Sign>
int word(const int (&positions)[kMostOnTrack], int found, const Sign* sign) {
    const int count = std::clamp(found, 1, kMostOnTrack);
    int p[kMostOnTrack] = {positions[0], positions[1], count > 2 ? positions[2] : kSubframe};
    for (const auto& [low, high] : {std::pair{0, 1}, {1, 2}, {0, 1}}) {
        if (p[low] > p[high]) {
            std::swap(p[low], p[high]);
        }
    }
    const auto ordered = [&] {
        for (int n = 1; n < count; ++n) {
            if ((p[n] < p[n - 1]) != (sign[p[n]] != sign[p[n - 1]])) {
                return false;
            }
        }
        return true;
    };
    while (!ordered() && std::next_permutation(p, p + count)) {
    }
    int code = sign[p[0]] > 0 ? 1 : 0;
    for (int n = count - 1; n >= 0; --n) {
        code = 8 * code + p[n] / kTracks;
    }
    return code;
}

template <class Sign>
void deliverWords(const int* positions, int pulses, int firstTrack, const Sign* sign, Vek16s* index) {
    int on[kTracks][kMostOnTrack] = {};
    int count[kTracks] = {};
    for (int n = 0; n < pulses; ++n) {
        const int t = positions[n] % kTracks;
        on[t][count[t]++] = positions[n];
    }
    const bool twelve = pulses == kMostPulses;
    for (int n = 0; n < kTracks; ++n) {
        const int t = twelve ? (firstTrack + n) % kTracks : n;
        index[n] = static_cast<Vek16s>(word(on[t], count[t], sign));
    }
    if (twelve) {
        index[0] = static_cast<Vek16s>(index[0] + 1024 * firstTrack);
    }
}

// Ten or twelve pulses: their words, vector and response.
template <class Value, class Found>
VekStatus searchMany(void (*search)(const Value*, const Value*, const Value*, int, Found&), int mode,
                     const Value* target, const Value* residual, const Value* h, Value* code, Value* filtered,
                     Vek16s* index) {
    if (anyNull(target, residual, h, code, filtered, index)) {
        return vekStsNullPtrErr;
    }
    if (mode < 0 || mode > 1) {
        return vekStsModeErr;
    }
    const int pulses = mode == 0 ? 10 : kMostPulses;
    Found found;
    search(target, residual, h, pulses, found);
    deliverWords(found.positions, pulses, found.firstTrack, found.sign, index);
    Value y[kSubframe] = {};
    std::fill_n(code, kSubframe, Value{0});
    for (int n = 0; n < pulses; ++n) {
        const int at = found.positions[n];
        addResponse(h, at, found.sign[at] > 0, y);
        const Value one = std::is_same_v<Value, Vek32f> ? Value{1} : static_cast<Value>(8192);
        code[at] = static_cast<Value>(found.sign[at] > 0 ? code[at] + one : code[at] - one);
    }
    std::copy_n(y, kSubframe, filtered);
    return vekStsNoErr;
}

// Where the pairs of two tracks, t below u, begin in the matrix of the four-pulse search; it lacks those of a track
// with itself and of the tracks 3 and 4.
constexpr int pairsOfTracks(int t, int u) {
    constexpr int before[] = {0, 4, 7};
    return kSubframe + 64 * (before[t] + u - t - 1);
}
constexpr int kOnTrack = kSubframe / kTracks;
constexpr int kLack = -1;

constexpr int energyPlace(int i) {
    return kOnTrack * (i % kTracks) + i / kTracks;
}
constexpr int matrixPlace(int i, int j) {
    if (i == j) {
        return energyPlace(i);
    }
    const int first = i % kTracks < j % kTracks ? i : j;
    const int t = first % kTracks;
    const int u = (i + j - first) % kTracks;
    return t == u || t == 3 ? kLack : pairsOfTracks(t, u) + kOnTrack * (first / kTracks) + (i + j - first) / kTracks;
}

// Of each pair of codes the place in the matrix. Those that it lacks come from the rows of the response's correlations.
constexpr auto kPairPlaces = [] {
    std::array<int16_t, kFirstCodes * kSecondCodes> places{};
    for (size_t n = 0; n < places.size(); ++n) {
        places[n] = static_cast<int16_t>(std::max(
            matrixPlace(kFirstPositions[n / kSecondCodes], kSecondPositions[n % kSecondCodes]), 0)); // 0: any other
    }
    return places;
}();
struct LackingPair {
    int16_t pair;
    int16_t row;
    int8_t first, second;
};
constexpr int kLackingCount = [] {
    int count = 0;
    for (const int i : kFirstPositions) {
        for (const int j : kSecondPositions) {
            count += matrixPlace(i, j) == kLack ? 1 : 0;
        }
    }
    return count;
}();
constexpr auto kLackingPairs = [] {
    std::array<LackingPair, kLackingCount> lacking{};
    size_t count = 0;
    for (int n = 0; n < kFirstCodes * kSecondCodes; ++n) {
        const int i = kFirstPositions[n / kSecondCodes];
        const int j = kSecondPositions[n % kSecondCodes];
        if (matrixPlace(i, j) == kLack) {
            const int distance = i < j ? j - i : i - j;
            lacking[count++] = {static_cast<int16_t>(n),
                                static_cast<int16_t>((kSubframe - 1 - std::max(i, j)) * kSubframe + distance),
                                static_cast<int8_t>(i), static_cast<int8_t>(j)};
        }
    }
    return lacking;
}();

// Multiplies the signs into the matrix of the four-pulse search.
void takeSigns(const Vek32f* sign, Vek32f* matrix) {
    Vek32f onTrack[kTracks][kOnTrack];
    for (int i = 0; i < kSubframe; ++i) {
        onTrack[i % kTracks][i / kTracks] = sign[i];
    }
    for (int t = 0; t < 3; ++t) {
        for (int u = t + 1; u < kTracks; ++u) {
            Vek32f* pairs = matrix + pairsOfTracks(t, u);
            for (int k = 0; k < kOnTrack; ++k, pairs += kOnTrack) {
                for (int l = 0; l < kOnTrack; ++l) {
                    pairs[l] *= onTrack[t][k] * onTrack[u][l];
                }
            }
        }
    }
}

} // namespace

VekStatus veksFixedCodebookSearch_G729D_16s(const Vek16s* pSrcFixed, const Vek16s* pSrcImpulseResponse,
                                            Vek16s* pDstFixedVector, Vek16s* pDstFltFixedVector, Vek16s* pDstSign,
                                            Vek16s* pDstIndex) {
    if (anyNull(pSrcFixed, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstSign, pDstIndex)) {
        return vekStsNullPtrErr;
    }
    PulseField field;
    Vek16s sign[kSubframe];
    signedField(pSrcFixed, pSrcImpulseResponse, sign, field);
    Vek16s d[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        d[i] = field.dn[slotOnFive(i)];
    }
    const auto rr = [&](int i, int j) { return field.rr[slotOnFive(i) * kSubframe + slotOnFive(j)]; };
    CodedField coded(d, [&](int i) { return rr(i, i); });
    for (int a = 0; a < kFirstCodes; ++a) {
        for (int b = 0; b < kSecondCodes; ++b) {
            coded.cross[kSecondCodes * a + b] = static_cast<float>(rr(kFirstPositions[a], kSecondPositions[b]));
        }
    }
    const TwoPulses two = coded.search();
    *pDstIndex = static_cast<Vek16s>(two.index());
    *pDstSign = static_cast<Vek16s>(deliverTwo(two, sign, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector));
    return vekStsNoErr;
}

VekStatus veksFixedCodebookSearch_G729D_32f(const Vek32f* pSrcFixed, Vek32f* pSrcDst, const Vek32f* pSrcImpulseResponse,
                                            Vek32f* pDstFixedVector, Vek32f* pDstFltFixedVector,
                                            Vek16s* pDstFixedIndex) {
    if (anyNull(pSrcFixed, pSrcDst, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstFixedIndex)) {
        return vekStsNullPtrErr;
    }
    Vek32f d[kSubframe];
    Vek32f sign[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        sign[i] = pSrcFixed[i] >= 0 ? 1.0F : -1.0F;
        d[i] = sign[i] * pSrcFixed[i];
    }
    takeSigns(sign, pSrcDst);
    alignas(32) Vek32f rows[kSubframe * kSubframe];
    filterKernels().corrRows32f(pSrcImpulseResponse, rows);
    CodedField coded(d, [&](int i) { return pSrcDst[energyPlace(i)]; });
    for (size_t n = 0; n < kPairPlaces.size(); ++n) {
        coded.cross[n] = pSrcDst[kPairPlaces[n]];
    }
    for (const LackingPair& lack : kLackingPairs) {
        coded.cross[lack.pair] = rows[lack.row] * sign[lack.first] * sign[lack.second];
    }
    const TwoPulses two = coded.search();
    pDstFixedIndex[0] = static_cast<Vek16s>(two.index());
    pDstFixedIndex[1] =
        static_cast<Vek16s>(deliverTwo(two, sign, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector));
    return vekStsNoErr;
}

VekStatus veksFixedCodebookSearch_G729E_16s(int mode, const Vek16s* pSrcFixed, const Vek16s* pSrcLtpResidual,
                                            const Vek16s* pSrcImpulseResponse, Vek16s* pDstFixedVector,
                                            Vek16s* pDstFltFixedVector, Vek16s* pDstFixedIndex) {
    return searchMany(searchPairs, mode, pSrcFixed, pSrcLtpResidual, pSrcImpulseResponse, pDstFixedVector,
                      pDstFltFixedVector, pDstFixedIndex);
}

VekStatus veksFixedCodebookSearch_G729E_32f(int mode, const Vek32f* pSrcFixed, const Vek32f* pSrcLtpResidual,
                                            const Vek32f* pSrcImpulseResponse, Vek32f* pDstFixedVector,
                                            Vek32f* pDstFltFixedVector, Vek16s* pDstFixedIndex) {
    return searchMany(floatpulses::searchPairs, mode, pSrcFixed, pSrcLtpResidual, pSrcImpulseResponse, pDstFixedVector,
                      pDstFltFixedVector, pDstFixedIndex);
}
