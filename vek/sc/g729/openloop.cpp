// Open-loop pitch: the search over three ranges of delays, in full and over every second sample, and the plain maximum
// of a correlation.
// Inner products come from the kernels, exact; where the energy proves that a saturating sum could have saturated on
// its way, it is made step by step instead.

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g729/delayranges.h"
#include "sc/kernels/corr.h"
#include "veksc_filter.h"
#include "veksc_g729pitch.h"

using namespace vek::g729;

namespace {

constexpr int kSpan = kLongestDelay + kFrame;

int32_t doubled(int64_t sum) {
    return sat32(2 * sum);
}

// Inner products as the basic operators make them.
class Products {
public:
    explicit Products(bool exact) : m_exact(exact) {}

    bool exact() const { return m_exact; }

    int32_t operator()(const Vek16s* a, const Vek16s* b, int n, int32_t start = 0) const {
        if (m_exact) {
            return sat32(start + 2 * corrKernels().dot16(a, b, n));
        }
        int32_t sum = start;
        for (int i = 0; i < n; ++i) {
            sum = L_mac(sum, a[i], b[i]);
        }
        return sum;
    }

private:
    bool m_exact;
};

// The scaled frame with its history before it, and how its products are to be summed.
Products scaleFrame(const Vek16s* pSrc, int64_t energy, Vek16s* scaled) {
    const int shift = 2 * energy > kMax32 ? -3 : 2 * energy < 1048576 ? 3 : 0;
    corrKernels().shift16(pSrc - kLongestDelay, scaled, kSpan, shift);
    // No partial sum over two stretches of the signal exceeds the energy of the whole.
    return Products(2 * corrKernels().dot16(scaled, scaled, kSpan) < kMax32);
}

// max / sqrt(energy), with the energy's root in Q30.
int32_t normalised(int32_t max, int32_t energy) {
    Vek32s root = energy;
    veksInvSqrt_32s_I(&root, 1);
    return Mpy_32(max, root);
}

struct Peak {
    int lag;
    int32_t value;
};

Peak fullPeak(const Products& products, const Vek16s* x, int longest, int shortest) {
    Peak best{longest, kMin32};
    if (products.exact()) {
        const MostOfSlide most = mostOfSlide(x, x - shortest, kFrame, -1, longest - shortest + 1);
        best = {shortest + most.at, doubled(most.sum)};
    } else {
        for (int lag = longest; lag >= shortest; --lag) {
            const int32_t sum = products(x, x - lag, kFrame);
            if (sum >= best.value) {
                best = {lag, sum};
            }
        }
    }
    const Vek16s* past = x - best.lag;
    best.value = extract_l(normalised(best.value, products(past, past, kFrame)));
    return best;
}

class HalfSearch {
public:
    HalfSearch(const Products& products, const Vek16s* x) : m_products(products), m_phases(x) {}

    Peak peak(int shortest, int end, int step) const {
        Peak best{shortest, kMin32};
        if (!m_products.exact()) {
            for (int lag = shortest; lag < end; lag += step) {
                take(best, lag);
            }
            return best;
        }
        // Every second delay of a phase is one sample farther on in it.
        for (int from = shortest; from <= shortest + 2 - step; ++from) {
            const MostOfSlide most =
                mostOfSlide(m_phases.now(), m_phases.past(from), kHalfFrame, -1, (end - from + 1) / 2);
            const Peak peak{from + 2 * most.at, doubled(most.sum)};
            if (peak.value > best.value || (peak.value == best.value && peak.lag < best.lag)) {
                best = peak;
            }
        }
        return best;
    }
    void take(Peak& best, int lag) const {
        const int32_t sum = m_products(m_phases.now(), m_phases.past(lag), kHalfFrame);
        if (sum > best.value) {
            best = {lag, sum};
        }
    }
    void normalise(Peak& best) const {
        const Vek16s* past = m_phases.past(best.lag);
        best.value = normalised(best.value, m_products(past, past, kHalfFrame, 1));
    }

private:
    Products m_products;
    Phases<Vek16s> m_phases;
};

int32_t fifth(int32_t v) {
    return Mpy_32_16(v, 6554);
}

VekStatus lagMax(const Vek16s* pSrc, int len, int lowerLag, int upperLag, int direction, Vek32s* pMax, int* pMaxLag) {
    if (anyNull(pSrc) || anyNull(pMax) || anyNull(pMaxLag)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (lowerLag < 0 || lowerLag > upperLag || upperLag > kMaxSignalLength) {
        return vekStsRangeErr;
    }
    const MostOfSlide most = mostOfSlide(pSrc, pSrc + direction * lowerLag, len, direction, upperLag - lowerLag + 1);
    *pMax = doubled(most.sum);
    *pMaxLag = lowerLag + most.at;
    return vekStsNoErr;
}

} // namespace

VekStatus veksOpenLoopPitchSearch_G729_16s(const Vek16s* pSrc, Vek16s* pBestLag) {
    if (anyNull(pSrc, pBestLag)) {
        return vekStsNullPtrErr;
    }
    constexpr Vek16s threshold = 27853; // 0.85
    Vek16s scaled[kSpan];
    const Vek16s* from = pSrc - kLongestDelay;
    const Products products = scaleFrame(pSrc, corrKernels().dot16(from, from, kSpan), scaled);
    const Vek16s* x = scaled + kLongestDelay;
    Peak best = fullPeak(products, x, kLongestDelay, 80);
    for (const int longest : {79, 39}) {
        const Peak shorter = fullPeak(products, x, longest, (longest + 1) / 2);
        if (mult(static_cast<Vek16s>(best.value), threshold) < shorter.value) {
            best = shorter;
        }
    }
    *pBestLag = static_cast<Vek16s>(best.lag);
    return vekStsNoErr;
}

VekStatus veksOpenLoopPitchSearch_G729A_16s(const Vek16s* pSrc, Vek16s* pBestLag) {
    if (anyNull(pSrc, pBestLag)) {
        return vekStsNullPtrErr;
    }
    int64_t energy = 0;
    for (int i = -kLongestDelay; i < kFrame; i += 2) {
        energy += pSrc[i] * pSrc[i];
    }
    Vek16s scaled[kSpan];
    const Products products = scaleFrame(pSrc, energy, scaled);
    const HalfSearch search(products, scaled + kLongestDelay);
    const int lag = g729::bestOfRanges(
        search, [](Peak& peak, const Peak& longer) { peak.value = L_add(peak.value, longer.value >> 2); },
        [](Peak& peak, const Peak& longer) { peak.value = L_add(peak.value, fifth(longer.value)); });
    *pBestLag = static_cast<Vek16s>(lag);
    return vekStsNoErr;
}

VekStatus veksAutoCorrLagMax_Fwd_16s(const Vek16s* pSrc, int len, int lowerLag, int upperLag, Vek32s* pMax,
                                     int* pMaxLag) {
    return lagMax(pSrc, len, lowerLag, upperLag, 1, pMax, pMaxLag);
}

VekStatus veksAutoCorrLagMax_Inv_16s(const Vek16s* pSrc, int len, int lowerLag, int upperLag, Vek32s* pMax,
                                     int* pMaxLag) {
    return lagMax(pSrc, len, lowerLag, upperLag, -1, pMax, pMaxLag);
}
