// Search of the algebraic codebook: signs from the target and the residual, then pulses in pairs on neighbouring
// tracks, or one pair on two tracks at the lowest rate.
#include <algorithm>

#include "sc/amrwb/normal.h"
#include "sc/amrwb/pulselayout.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/widepulses.h"
#include "veksc_amrwb.h"

namespace {

using namespace vek::amrwb;

constexpr int kLen = kSubframe;
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

// A response with its mirror image, both followed by zeros.
struct Response {
    alignas(32) Vek16s up[2 * kLen] = {};
    alignas(32) Vek16s down[2 * kLen] = {};

    Response(const Vek16s* h, int shift) {
        for (int i = 0; i < kLen; ++i) {
            up[i] = static_cast<Vek16s>(h[i] >> shift);
            down[i] = negate(up[i]);
        }
    }
};

// Correlations of the response with itself, by the distance of two positions and the later one counted from the end.
class Matrix {
public:
    explicit Matrix(const Vek16s* h) {
        const int64_t energy = corrKernels().dot16(h, h, kLen);
        if (energy < (1 << 30) - 0x8000) {
            widePulseKernels().rows(h, m_rows);
            return;
        }
        int64_t sum[kLen];
        std::fill_n(sum, kLen, 0x8000);
        for (int m = 0; m < kLen; ++m) {
            for (int d = 0; d < kLen - m; ++d) {
                sum[d] = sat32(sum[d] + 2 * h[m] * int64_t{h[m + d]});
                m_rows[m * kLen + d] = static_cast<Vek16s>(sum[d] >> 16);
            }
        }
    }
    Vek16s energy(int i) const { return m_rows[(kLen - 1 - i) * kLen]; }

    const Vek16s* rows() const { return m_rows; }

private:
    alignas(32) Vek16s m_rows[(kLen + 1) * kLen];
};

// One pulse on the even positions and one on the odd ones.
void searchPair(const Vek16s* h, const Field& field, int* found) {
    constexpr int kLanes = kLen / kPairTracks;
    constexpr int8_t kAll[kLanes] = {};
    const Response response(h, 0);
    const Matrix matrix(response.up);
    alignas(32) Vek16s dn[kPairTracks][kLanes];
    alignas(32) Vek16s energy[kPairTracks][kLanes];
    alignas(32) Vek16s between[kLanes * kLanes];
    int64_t sum = 0x8000;
    for (int i = kLen - 1; i >= 0; --i) {
        // Halves of the energies, rounded on their own.
        sum = std::min(sum + int64_t{h[kLen - 1 - i]} * h[kLen - 1 - i], int64_t{kMax32 / 2});
        energy[i % kPairTracks][i / kPairTracks] = static_cast<Vek16s>(sum >> 16);
        dn[i % kPairTracks][i / kPairTracks] = field.dn[i];
    }
    widePulseKernels().between32(matrix.rows(), 0, 1, field.sign, between);
    WideBest best{-1, 1, 0, 0, 0};
    widePulseKernels().pair32({dn[0], dn[1], energy[0], energy[1], between, kAll, 1, 0, 0, 0, 0}, best);
    found[0] = kPairTracks * best.first;
    found[1] = kPairTracks * best.second + 1;
}

class Search {
public:
    Search(const Vek16s* h, Field& field, const Plan& plan, Rate rate)
        : m_field(field), m_plan(plan), m_rate(rate), m_shift(shiftOf(h, plan.pulses)), m_h(h, m_shift) {
        const Matrix matrix(m_h.up);
        for (int t = 0; t < kTracks; ++t) {
            widePulseKernels().between16(matrix.rows(), t, (t + 1) % kTracks, field.sign, m_between[t]);
            Vek16s mix[kTrackPositions];
            for (int k = 0; k < kTrackPositions; ++k) {
                const int at = kTracks * k + t;
                m_dn[t][k] = field.dn[at];
                m_energy[t][k] = matrix.energy(at);
                mix[k] = field.mix[at];
            }
            // The positions of the track in the order of the mix; the first ones are candidates.
            widePulseKernels().ranks(mix, m_rank[t]);
            for (int k = 0; k < kTrackPositions; ++k) {
                m_peak[t] = m_rank[t][k] == 0 ? kTracks * k + t : m_peak[t];
            }
        }
    }

    void run() {
        int bestSquare = -1;
        int bestEnergy = 1;
        for (int i = 0; i < m_plan.pulses; ++i) {
            m_best[i] = i;
        }
        for (int start = 0; start < m_plan.starts; ++start) {
            int tracks[kMostPulses];
            order(start, tracks);
            int at[kMostPulses];
            const WideBest last = once(tracks, at);
            if (bestEnergy * last.square > bestSquare * last.energy) {
                bestSquare = last.square;
                bestEnergy = last.energy;
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
    static int shiftOf(const Vek16s* h, int pulses) {
        return pulses >= 12 && sat32(2 * corrKernels().dot16(h, h, kLen)) >> 16 > 0x400 ? 1 : 0;
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
        const Vek16s* h = m_field.sign[at] > 0 ? m_h.up : m_h.down;
        filterKernels().weighted(m_response + at, 1, h, 1, m_response + at, kLen - at, 0, 0);
    }

    // Correlation of the response so far with the one from each position of a track, and that one's energy.
    void cross(int track, Vek16s* out) const {
        const CorrKernels& kernels = corrKernels();
        for (int k = 0; k < kTrackPositions; ++k) {
            const int at = kTracks * k + track;
            // The upper half of four times the sum, rounded.
            const int v = sat16_64((kernels.dot16(m_h.up, m_response + at, kLen - at) + 0x2000) >> 14);
            const int turned = m_field.sign[at] > 0 ? (v * 32767) >> 15 : -v;
            out[k] = sat16(turned + m_energy[track][k]);
        }
    }

    WideBest once(const int* tracks, int* at) {
        std::fill_n(m_response, kLen + kCorrPadding, Vek16s{0});
        WideBest last{-1, 0, 0, 0, 0};
        for (int i = 0; i < m_plan.fixed; ++i) {
            at[i] = m_peak[tracks[i]];
            last.correlation = sat16(last.correlation + m_field.dn[at[i]]);
            addResponse(at[i]);
        }
        if (m_plan.fixed == 2) {
            const int t = tracks[0];
            const int i = at[0] / kTracks;
            const int j = at[1] / kTracks;
            const int sum = m_energy[t][i] + m_energy[tracks[1]][j] + 2 * m_between[t][i * kTrackPositions + j];
            last.energy = sat16((sum + 4) >> 3);
        } else if (m_plan.fixed == 4) {
            last.energy = round_s(sat32(2 * corrKernels().dot16(m_response, m_response, kLen)) >> 3);
        }
        for (int i = m_plan.fixed, stage = 0; i < m_plan.pulses; i += 2, ++stage) {
            pair(tracks[i], tracks[i + 1], m_plan.tried[stage], last);
            at[i] = kTracks * last.first + tracks[i];
            at[i + 1] = kTracks * last.second + tracks[i + 1];
            addResponse(at[i]);
            addResponse(at[i + 1]);
        }
        return last;
    }

    void pair(int t, int next, int tried, WideBest& last) const {
        alignas(32) Vek16s first[kTrackPositions];
        alignas(32) Vek16s second[kTrackPositions];
        cross(t, first);
        cross(next, second);
        // Eighths of an energy, and half of one.
        const WidePair both{m_dn[t],          m_dn[next],          first, second, m_between[t], m_rank[t], tried,
                            last.correlation, 8 * last.energy + 4, 1,     3};
        last = {-1, 1, last.correlation, 0, 0};
        widePulseKernels().pair16(both, last);
    }

    static constexpr int kMostPulses = 24;

    const Field& m_field;
    const Plan m_plan;
    const Rate m_rate;
    const int m_shift;
    const Response m_h;
    alignas(32) Vek16s m_response[kLen + kCorrPadding] = {};
    alignas(32) Vek16s m_between[kTracks][kTrackPositions * kTrackPositions];
    alignas(32) Vek16s m_dn[kTracks][kTrackPositions];
    alignas(32) Vek16s m_energy[kTracks][kTrackPositions];
    int8_t m_rank[kTracks][kTrackPositions];
    Vek16s m_bestResponse[kLen] = {};
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
        searchPair(pSrcDstImpulseResponse, field, at);
        writePair(pSrcDstImpulseResponse, field, at, pDstFixedVector, pDstFltFixedVector, pDstIndex);
        return vekStsNoErr;
    }
    Search search(pSrcDstImpulseResponse, field, plan, rate);
    search.run();
    search.write(pDstFixedVector, pDstFltFixedVector, pDstIndex);
    return vekStsNoErr;
}
