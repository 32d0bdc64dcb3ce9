// Quantiser of the two gains of G.729 and its Annex D in fixed point: the entries near the best gains, then the least
// error of all their pairs. Codebooks and prediction are in gains.h.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <limits>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g729/gains.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/corr.h"
#include "veksc_g729code.h"

namespace {

using namespace vek::g729;

constexpr int kGainBits = 14; // of the adaptive gain

// With a tamed filter: the best adaptive gain that is aimed at, and the bound of the quantised one. Q14.
constexpr int16_t kTamedAim = 481 << 5;
constexpr int16_t kTamedBound = 16383;

// mantissa * 2^-exponent, the mantissa normalised.
struct Scaled {
    int32_t mantissa;
    int exponent;
};

Scaled normalised(int64_t v, int exponent) {
    const int shift = norm_64(v) - 32;
    return {static_cast<int32_t>(shift >= 0 ? v << shift : v >> -shift), exponent + shift};
}

// a b - c d
Scaled difference(const Scaled& a, const Scaled& b, const Scaled& c, const Scaled& d) {
    int64_t one = int64_t{a.mantissa} * b.mantissa >> 1;
    int64_t two = int64_t{c.mantissa} * d.mantissa >> 1;
    const int oneExponent = a.exponent + b.exponent - 1;
    const int twoExponent = c.exponent + d.exponent - 1;
    const int exponent = one == 0 ? twoExponent : two == 0 ? oneExponent : std::min(oneExponent, twoExponent);
    one >>= std::clamp(oneExponent - exponent, 0, 63);
    two >>= std::clamp(twoExponent - exponent, 0, 63);
    return normalised(one - two, exponent);
}

// numerator / denominator (above 0) with so many bits behind the point, saturated.
int16_t quotient(const Scaled& numerator, const Scaled& denominator, int bits) {
    const int16_t size = extract_h(L_shr(L_abs(numerator.mantissa), 1));
    const int32_t q = div_s(size, extract_h(denominator.mantissa));
    const int shift = bits + denominator.exponent - numerator.exponent - 14;
    const int16_t v = sat16(L_shl(q, std::clamp(shift, -31, 31)));
    return numerator.mantissa < 0 ? negate(v) : v;
}

// An entry of a codebook and its code.
struct Ranked {
    int16_t adaptive;
    int16_t factor;
    int16_t code;
};

struct Gains {
    int16_t adaptive; // Q14
    int16_t fixed;
};

// The weights of the error in the gains: yy, -2xy, zz, -2xz, 2yz for products of Q15, with one common exponent, 32 bits
// each. Gains have 16: doubles hold all that is made of them exactly.
using Weights = std::array<double, 5>;

// The largest multiple of 2^15 up to an integer, from which kBelow was taken.
constexpr double kOne = 32768;
constexpr double kBelow = (kOne - 1) / 2;
double cut(double x) {
    constexpr double multiples = 0x1.8p52 * kOne; // numbers of this size end with 2^15
    return x + multiples - multiples;
}

struct Correlations {
    int64_t yy, xy, zz, xz, yz;

    Weights weights(int fixedBits) const {
        const Scaled terms[] = {normalised(yy, 2 * kGainBits - 15), normalised(-2 * xy, kGainBits),
                                normalised(zz, 24 + 2 * fixedBits - 15), normalised(-2 * xz, 12 + fixedBits),
                                normalised(2 * yz, 12 + kGainBits + fixedBits - 15)};
        int least = terms[0].exponent;
        for (const Scaled& t : terms) {
            least = t.mantissa == 0 ? least : std::min(least, t.exponent);
        }
        Weights weights{};
        for (std::size_t i = 0; i < weights.size(); ++i) {
            weights[i] = static_cast<double>(L_shr(terms[i].mantissa, std::min(terms[i].exponent - least, 31)));
        }
        return weights;
    }

    // The gains of least error.
    Gains best(int fixedBits) const {
        const Scaled y2 = normalised(yy, 0);
        const Scaled z2 = normalised(zz, 24);
        const Scaled yx = normalised(xy, 0);
        const Scaled zx = normalised(xz, 12);
        const Scaled zy = normalised(yz, 12);
        const Scaled denominator = difference(y2, z2, zy, zy);
        if (denominator.mantissa <= 0) {
            return {0, 0};
        }
        return {quotient(difference(z2, yx, zx, zy), denominator, kGainBits),
                quotient(difference(y2, zx, yx, zy), denominator, fixedBits)};
    }
};

// The first codebook in order of the factors, the second in order of the adaptive gains; also as the search calculates
// with them.
template <std::size_t Seconds, int FirstTried, int SecondTried>
struct Codebook {
    std::array<Ranked, kFirstEntries> first{};
    std::array<Ranked, Seconds> second{};
    std::array<double, Seconds> secondAdaptive{};
    std::array<std::array<double, Seconds>, kFirstEntries> halfFactors{}; // of both together
    int factorBits;

    Codebook(const std::array<GainEntry, kFirstEntries>& firsts, const std::array<GainEntry, Seconds>& seconds,
             int bits)
        : factorBits(bits) {
        const auto ranked = [](const GainEntry& e, std::size_t i) {
            return Ranked{e.adaptive, e.factor, static_cast<int16_t>(i)};
        };
        for (std::size_t i = 0; i < first.size(); ++i) {
            first[i] = ranked(firsts[i], i);
        }
        for (std::size_t i = 0; i < Seconds; ++i) {
            second[i] = ranked(seconds[i], i);
        }
        std::sort(first.begin(), first.end(), [](const Ranked& a, const Ranked& b) { return a.factor < b.factor; });
        std::sort(second.begin(), second.end(),
                  [](const Ranked& a, const Ranked& b) { return a.adaptive < b.adaptive; });
        for (std::size_t j = 0; j < Seconds; ++j) {
            secondAdaptive[j] = second[j].adaptive;
            for (std::size_t i = 0; i < first.size(); ++i) {
                halfFactors[i][j] = (first[i].factor + second[j].factor) >> 1;
            }
        }
    }

    // The pair of least error of the entries around the best gains; the tables are left to the caller.
    std::array<Ranked, 2> search(const Weights& w, Gains best, int predicted, bool tamed) const {
        if (tamed) {
            best.adaptive = std::min(best.adaptive, kTamedAim);
        }
        const int32_t aim = best.fixed * (1 << 16);
        const auto a =
            std::count_if(first.begin(), first.end(), [&](const Ranked& e) { return aim > e.factor * predicted; });
        const auto b =
            std::count_if(second.begin(), second.end(), [&](const Ranked& e) { return best.adaptive > e.adaptive; });
        const auto from = [](auto at, int tried, std::size_t entries) {
            return static_cast<std::size_t>(
                std::clamp(static_cast<int>(at) - tried / 2, 0, static_cast<int>(entries) - tried));
        };
        const std::size_t one = from(a, FirstTried, first.size());
        const std::size_t two = from(b, SecondTried, Seconds);
        const double bound = tamed ? kTamedBound : 32767;
        const double prediction = predicted;
        // Products of sums are sums of products, of which there are fewer.
        double squares[SecondTried];
        for (int j = 0; j < SecondTried; ++j) {
            squares[j] = w[0] * secondAdaptive[two + j];
        }
        // Slopes and errors are times 2^15, errors of 50 bits in units of it. Keys are in the order of the errors, then
        // in that of the pairs.
        constexpr double ones = 0x1.8p52 * kOne;
        constexpr double most = ones + 0x1p50 * kOne;
        constexpr int order = 64;
        static_assert(FirstTried * SecondTried <= order);
        int64_t least = std::numeric_limits<int64_t>::max();
        for (int i = 0; i < FirstTried; ++i) {
            const double* const halves = halfFactors[one + i].data() + two;
            const double adaptive = first[one + i].adaptive;
            const double square = w[0] * adaptive - kBelow;
            double errors[SecondTried];
#pragma GCC unroll 1
            for (int j = 0; j < SecondTried; ++j) {
                const double gp = adaptive + secondAdaptive[two + j];
                const double gc = cut(halves[j] * prediction - kBelow);
                const double slope = cut(squares[j] + square + w[4] / kOne * gc) + w[1] * kOne;
                const double other = cut(w[2] / kOne * gc - kBelow) + w[3] * kOne;
                errors[j] = slope * gp + other * (gc / kOne) + ones;
            }
            for (int j = 0; j < SecondTried; ++j) {
                const bool taken = adaptive + secondAdaptive[two + j] < bound;
                const int64_t error = std::bit_cast<int64_t>(taken ? errors[j] : most) - std::bit_cast<int64_t>(ones);
                least = std::min(least, error * order + i * SecondTried + j);
            }
        }
        const auto found = static_cast<std::size_t>(least & (order - 1));
        return {first[one + found / SecondTried], second[two + found % SecondTried]};
    }
};

const auto& codebook() {
    static const Codebook<kSecondEntries, 4, 8> book(kFirstGains, kSecondGains, 13);
    return book;
}

const auto& codebookD() {
    static const Codebook<kSecondEntriesD, 6, 6> book(kFirstGainsD, kSecondGainsD, 14);
    return book;
}

template <class Book>
VekStatus quantise(const Book& book, const Vek16s* x, const Vek16s* y, const Vek16s* code, const Vek16s* z,
                   Vek16s* past, Vek16s* gains, Vek16s* index, int tame) {
    if (anyNull(x, y, code, z, past, gains, index)) {
        return vekStsNullPtrErr;
    }
    if (tame < 0 || tame > 1) {
        return vekStsRangeErr;
    }
    const auto product = corrKernels().dot16;
    // One more than nothing: silence has a least error too.
    const Correlations sums{std::max<int64_t>(product(y, y, kSubframe), 1), product(x, y, kSubframe),
                            std::max<int64_t>(product(z, z, kSubframe), 1), product(x, z, kSubframe),
                            product(y, z, kSubframe)};
    const auto energy = static_cast<int32_t>(std::min<int64_t>(product(code, code, kSubframe), INT32_MAX));
    const PredictedGain predicted = predictGain(energy, past);
    // A fixed gain is (factor / 2) * mantissa / 2^15.
    const int fixedBits = predicted.exponent + book.factorBits - 1 - 15;
    const auto found = book.search(sums.weights(fixedBits), sums.best(fixedBits), predicted.mantissa, tame == 1);
    const int factor = (found[0].factor + found[1].factor) >> (book.factorBits - 13);
    gains[0] = static_cast<Vek16s>(found[0].adaptive + found[1].adaptive);
    gains[1] = fixedGain(factor, predicted);
    index[0] = found[0].code;
    index[1] = found[1].code;
    movePast(factor, past);
    return vekStsNoErr;
}

} // namespace

VekStatus veksGainQuant_G729_16s(const Vek16s* pSrcTarget, const Vek16s* pSrcFltAdptVector,
                                 const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector, Vek16s* pPastEnergy,
                                 Vek16s* pDstQGain, Vek16s* pDstIndex, Vek16s tameflag) {
    return quantise(codebook(), pSrcTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pPastEnergy,
                    pDstQGain, pDstIndex, tameflag);
}

VekStatus veksGainQuant_G729D_16s(const Vek16s* pSrcTarget, const Vek16s* pSrcFltAdptVector,
                                  const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector, Vek16s* pPastEnergy,
                                  Vek16s* pDstQGain, Vek16s* pDstIndex, Vek16s tameflag) {
    return quantise(codebookD(), pSrcTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pPastEnergy,
                    pDstQGain, pDstIndex, tameflag);
}
