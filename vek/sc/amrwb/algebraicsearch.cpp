// Search of the algebraic codebook: signs from the target and the residual, then pulses in pairs on neighbouring
// tracks, or one pair on two tracks at the lowest rate.
#include <algorithm>
#include <cstdlib>

#include "sc/amrwb/normal.h"
#include "sc/amrwb/pulselayout.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwb.h"

namespace {

using namespace vek;
using namespace vek::fix;
using namespace vek::amrwb;

constexpr int kLen = kSubframe;
constexpr int kMostPulses = 24;
constexpr int kCandidates = 8;
constexpr int kPairTracks = 2;

// The plan of a rate: starts tried, weight of the target against the residual (Q12), pulses, those that stay where the
// maxima are, and how many first positions each pair tries.
struct Plan {
    int starts;
    Vek16s weight;
    int pulses;
    int fixed;
    int tried[10];
};

constexpr Plan planOf(Rate rate) {
    switch (rate) {
    case Rate::R660:
        return {1, 8192, 2, 0, {}};
    case Rate::R885:
        return {4, 8192, 4, 0, {4, 8}};
    case Rate::R1265:
        return {4, 4096, 8, 2, {4, 8, 8}};
    case Rate::R1425:
        return {4, 4096, 10, 2, {4, 6, 8, 8}};
    case Rate::R1585:
        return {4, 4096, 12, 4, {4, 6, 8, 8}};
    case Rate::R1825:
        return {3, 3277, 16, 4, {4, 4, 6, 6, 8, 8}};
    case Rate::R1985:
        return {3, 3072, 18, 4, {2, 3, 4, 5, 6, 7, 8}};
    case Rate::R2305:
        return {2, 2048, 24, 4, {2, 2, 3, 4, 5, 6, 7, 8, 8, 8}};
    default:
        return {1, 2048, 24, 4, {2, 2, 3, 4, 5, 6, 7, 8, 8, 8}};
    }
}

// The target filtered backwards, twelve bits.
void backward(const Vek16s* target, const Vek16s* h, Vek16s* dn) {
    alignas(32) Vek16s x[kLen + kCorrPadding] = {};
    alignas(32) Vek16s response[kLen + kCorrPadding] = {};
    std::copy_n(target, kLen, x);
    std::copy_n(h, kLen, response);
    int32_t sums[kLen];
    const CorrKernels& kernels = corrKernels();
    for (int i = 0; i < kLen; ++i) {
        sums[i] = sat32(2 * kernels.dot16(x + i, response, kLen - i) + 1);
    }
    int32_t total = 1;
    for (int t = 0; t < kTracks; ++t) {
        int32_t most = 0;
        for (int i = t; i < kLen; i += kTracks) {
            most = std::max(most, L_abs(sums[i]));
        }
        total = L_add(total, L_add(most >> 2, most >> 3));
    }
    const int shift = norm_l(total) - 4;
    for (int i = 0; i < kLen; ++i) {
        dn[i] = round_s(L_shl(sums[i], shift));
    }
}

struct Field {
    // Correlations with the signs taken out, their mix with the residual, signs.
    Vek16s dn[kLen];
    Vek16s mix[kLen];
    Vek16s sign[kLen];

    // dn comes in.
    void setSigns(const Vek16s* residual, Vek16s weight) {
        const Normal own = inverseRoot(product(residual, residual, kLen));
        const Normal other = inverseRoot(product(dn, dn, kLen));
        const Vek16s ofResidual = round_s(L_shl(own.mantissa, own.exponent + 5));
        const Vek16s ofTarget = mult_r(weight, round_s(L_shl(other.mantissa, other.exponent + 8)));
        for (int i = 0; i < kLen; ++i) {
            const int32_t sum = L_mac(L_mult(ofResidual, residual[i]), ofTarget, dn[i]);
            mix[i] = extract_h(L_shl(sum, 8));
            sign[i] = mix[i] >= 0 ? 1 : -1;
            if (mix[i] < 0) {
                mix[i] = negate(mix[i]);
                dn[i] = negate(dn[i]);
            }
        }
    }
};

// A product with a sign of 32767 or -32768, as 16 bits have it.
inline int signedHalf(int v, int sign) {
    return sign > 0 ? (v * 32767) >> 15 : -v;
}

void writePair(const Vek16s* h, const Field& field, const int* at, Vek16s* vector, Vek16s* filtered, Vek16s* words) {
    std::fill_n(vector, kLen, Vek16s{0});
    int word = 0;
    int32_t sum[kLen] = {};
    for (int t = 0; t < kPairTracks; ++t) {
        const int sign = field.sign[at[t]];
        vector[at[t]] = static_cast<Vek16s>(512 * sign);
        word = (word << 6) + at[t] / kPairTracks + (sign < 0 ? 32 : 0);
        for (int i = at[t]; i < kLen; ++i) {
            sum[i] = sat16(sum[i] + sat16(sign * h[i - at[t]]));
        }
    }
    words[0] = static_cast<Vek16s>(word);
    for (int i = 0; i < kLen; ++i) {
        filtered[i] = shr_r(static_cast<Vek16s>(sum[i]), 3);
    }
}

// Elements of the response's matrix, in the distance and the later of two positions counted from the end.
struct Matrix {
    Vek16s rows[kLen][kLen];
    // Halves of the energies, rounded on their own.
    Vek16s halves[kLen];

    explicit Matrix(const Vek16s* h) {
        int64_t sum[kLen];
        std::fill_n(sum, kLen, 0x8000);
        for (int m = 0; m < kLen; ++m) {
            for (int d = 0; d < kLen - m; ++d) {
                sum[d] = sat32(sum[d] + 2 * h[m] * int64_t{h[m + d]});
                rows[m][d] = static_cast<Vek16s>(sum[d] >> 16);
            }
            halves[m] = static_cast<Vek16s>(sat32(sum[0] + 0x8000) >> 17);
        }
    }
    int half(int i) const { return halves[kLen - 1 - i]; }
    int at(int i, int j) const { return rows[kLen - 1 - std::max(i, j)][std::abs(i - j)]; }
};

void searchPair(const Field& field, const Matrix& matrix, int* found) {
    int best = -1;
    int bestEnergy = 1;
    found[0] = 0;
    found[1] = 1;
    for (int i = 0; i < kLen; i += kPairTracks) {
        for (int j = 1; j < kLen; j += kPairTracks) {
            const int c = sat16(field.dn[i] + field.dn[j]);
            const int square = sat16((c * c) >> 15);
            const int cross = signedHalf(matrix.at(i, j), field.sign[i] * field.sign[j]);
            const int energy = sat16(matrix.half(i) + matrix.half(j) + cross);
            if (int64_t{bestEnergy} * square > int64_t{best} * energy) {
                best = square;
                bestEnergy = energy;
                found[0] = i;
                found[1] = j;
            }
        }
    }
}

class Search {
public:
    Search(const Vek16s* h, Field& field, const Plan& plan, Rate rate)
        : m_field(field), m_plan(plan), m_rate(rate), m_shift(shiftOf(h, plan.pulses)), m_matrix(scaled(h)) {
        std::fill_n(m_rank, kLen, kCandidates);
        // The positions of each track in the order of the mix; the first eight are candidates.
        for (int t = 0; t < kTracks; ++t) {
            Vek16s left[kLen];
            std::copy_n(field.mix, kLen, left);
            for (int k = 0; k < kCandidates; ++k) {
                int at = t;
                for (int i = t; i < kLen; i += kTracks) {
                    at = left[i] > left[at] ? i : at;
                }
                left[at] = -1;
                m_rank[at] = k;
                m_peak[t] = k == 0 ? at : m_peak[t];
            }
        }
    }

    void run() {
        Vek16s bestSquare = -1;
        Vek16s bestEnergy = 1;
        for (int i = 0; i < m_plan.pulses; ++i) {
            m_best[i] = i;
        }
        for (int start = 0; start < m_plan.starts; ++start) {
            int tracks[kMostPulses];
            order(start, tracks);
            int at[kMostPulses];
            const auto [square, energy] = once(tracks, at);
            if (L_msu(L_mult(bestEnergy, square), bestSquare, energy) > 0) {
                bestSquare = square;
                bestEnergy = energy;
                std::copy_n(at, m_plan.pulses, m_best);
                std::copy_n(m_response, kLen, m_bestResponse);
            }
        }
    }

    void write(Vek16s* vector, Vek16s* filtered, Vek16s* words) const {
        const WordLayout layout = layoutOf(m_rate);
        int pulses[kTracks][kMostOnTrack] = {};
        int count[kTracks] = {};
        std::fill_n(vector, kLen, Vek16s{0});
        for (int i = 0; i < m_plan.pulses; ++i) {
            const int at = m_best[i];
            const int sign = m_field.sign[at];
            const int t = at % kTracks;
            vector[at] = static_cast<Vek16s>(vector[at] + sign * (512 >> m_shift));
            if (count[t] < kMostOnTrack) {
                pulses[t][count[t]++] = at / kTracks + (sign < 0 ? kTrackPositions : 0);
            }
        }
        for (int i = 0; i < kLen; ++i) {
            filtered[i] = shr_r(m_bestResponse[i], 3);
        }
        for (int t = 0; t < kTracks; ++t) {
            const uint32_t word = encodeTrack(pulses[t], layout.pulses[t]);
            const int low = layout.lowBits[t];
            words[t] = static_cast<Vek16s>(word >> low);
            if (low > 0) {
                words[t + kTracks] = static_cast<Vek16s>(word & ((1U << low) - 1));
            }
        }
    }

private:
    struct Measure {
        Vek16s square;
        Vek16s energy;
    };

    static int shiftOf(const Vek16s* h, int pulses) {
        return pulses >= 12 && sat32(2 * corrKernels().dot16(h, h, kLen)) >> 16 > 0x1000 ? 1 : 0;
    }

    const Vek16s* scaled(const Vek16s* h) {
        std::fill_n(m_h, kLen + kCorrPadding, Vek16s{0});
        for (int i = 0; i < kLen; ++i) {
            m_h[i] = static_cast<Vek16s>(h[i] >> m_shift);
        }
        return m_h;
    }

    void order(int start, int* tracks) const {
        // Each group of four begins a track later than the one before.
        for (int i = 0; i < m_plan.pulses; ++i) {
            tracks[i] = (start + i / kTracks + i) % kTracks;
        }
        if (m_rate == Rate::R1425) {
            tracks[8] = 0;
            tracks[9] = 1;
        } else if (m_rate == Rate::R1985) {
            tracks[16] = 0;
            tracks[17] = 1;
        }
    }

    void addResponse(int at) {
        const int sign = m_field.sign[at];
        for (int i = at; i < kLen; ++i) {
            m_response[i] = sat16(m_response[i] + sat16(sign * m_h[i - at]));
        }
    }

    // Correlation of the response so far with the one from each position of a track, and that one's energy.
    void cross(int track, Vek16s* out) const {
        const CorrKernels& kernels = corrKernels();
        for (int k = 0; k < kTrackPositions; ++k) {
            const int at = kTracks * k + track;
            const int64_t sum = kernels.dot16(m_h, m_response + at, kLen - at);
            const int v = round_s(L_shl(sat32(2 * sum), 1));
            out[k] = sat16(signedHalf(v, m_field.sign[at]) + m_matrix.at(at, at));
        }
    }

    Measure once(const int* tracks, int* at) {
        std::fill_n(m_response, kLen + kCorrPadding, Vek16s{0});
        int correlation = 0;
        Vek16s energy = 0;
        for (int i = 0; i < m_plan.fixed; ++i) {
            at[i] = m_peak[tracks[i]];
            correlation = sat16(correlation + m_field.dn[at[i]]);
            addResponse(at[i]);
        }
        if (m_plan.fixed == 2) {
            int64_t sum = int64_t{m_matrix.at(at[0], at[0])} * 8192 + int64_t{m_matrix.at(at[1], at[1])} * 8192;
            sum += int64_t{signedHalf(m_matrix.at(at[0], at[1]), m_field.sign[at[0]] * m_field.sign[at[1]])} * 16384;
            energy = round_s(sat32(sum));
        } else if (m_plan.fixed == 4) {
            energy = round_s(sat32(2 * corrKernels().dot16(m_response, m_response, kLen)) >> 3);
        }
        Measure last{};
        for (int i = m_plan.fixed, stage = 0; i < m_plan.pulses; i += 2, ++stage) {
            last = pair(tracks + i, m_plan.tried[stage], correlation, energy, at + i);
            addResponse(at[i]);
            addResponse(at[i + 1]);
        }
        return last;
    }

    Measure pair(const int* tracks, int tried, int& correlation, Vek16s& energy, int* at) {
        Vek16s first[kTrackPositions];
        Vek16s second[kTrackPositions];
        cross(tracks[0], first);
        cross(tracks[1], second);
        const int32_t base = L_add(L_deposit_h(energy), 0x8000);
        Measure best{-1, 1};
        int found = correlation;
        at[0] = tracks[0];
        at[1] = tracks[1];
        for (int k = 0; k < kTrackPositions; ++k) {
            const int i = kTracks * k + tracks[0];
            if (m_rank[i] >= tried) {
                continue;
            }
            const int64_t own = base + int64_t{first[k]} * 8192;
            const int c1 = correlation + m_field.dn[i];
            for (int l = 0; l < kTrackPositions; ++l) {
                const int j = kTracks * l + tracks[1];
                const int r = signedHalf(m_matrix.at(i, j), m_field.sign[i] * m_field.sign[j]);
                const auto e = static_cast<Vek16s>(sat32(own + int64_t{second[l]} * 8192 + int64_t{r} * 16384) >> 16);
                const int c = sat16(c1 + m_field.dn[j]);
                const Vek16s square = sat16((c * c) >> 15);
                if (best.energy * square > best.square * e) {
                    best = {square, e};
                    found = c;
                    at[0] = i;
                    at[1] = j;
                }
            }
        }
        correlation = found;
        energy = best.energy;
        return best;
    }

    const Field& m_field;
    const Plan m_plan;
    const Rate m_rate;
    const int m_shift;
    alignas(32) Vek16s m_h[kLen + kCorrPadding];
    alignas(32) Vek16s m_response[kLen + kCorrPadding] = {};
    Vek16s m_bestResponse[kLen] = {};
    const Matrix m_matrix;
    int m_rank[kLen];
    int m_peak[kTracks] = {};
    int m_best[kMostPulses] = {};
};

} // namespace

VekStatus veksAlgebraicCodebookSearch_AMRWB_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                const Vek16s* pSrcDstImpulseResponse, Vek16s* pDstFixedVector,
                                                Vek16s* pDstFltFixedVector, VekSpchBitRate mode, Vek16s* pDstIndex) {
    if (anyNull(pSrcFixedTarget, pSrcLtpResidual, pSrcDstImpulseResponse, pDstFixedVector, pDstFltFixedVector,
                pDstIndex)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    const Plan plan = planOf(rate);
    Field field;
    backward(pSrcFixedTarget, pSrcDstImpulseResponse, field.dn);
    field.setSigns(pSrcLtpResidual, plan.weight);
    if (rate == Rate::R660) {
        int at[kPairTracks];
        searchPair(field, Matrix(pSrcDstImpulseResponse), at);
        writePair(pSrcDstImpulseResponse, field, at, pDstFixedVector, pDstFltFixedVector, pDstIndex);
        return vekStsNoErr;
    }
    Search search(pSrcDstImpulseResponse, field, plan, rate);
    search.run();
    search.write(pDstFixedVector, pDstFltFixedVector, pDstIndex);
    return vekStsNoErr;
}
