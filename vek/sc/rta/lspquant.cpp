// Multi-stage vector quantiser of line spectral pairs of the real-time audio codec; the rule that makes its codebooks
// is in the public header.
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>

#include "sc/common/signal_check.h"
#include "sc/kernels/rta.h"
#include "sc/rta/gauss.h"
#include "veksc_rta.h"

namespace {

using namespace vek;
using namespace vek::rta;

struct LspBook {
    static constexpr int kMostOrder = 10;
    static constexpr int kMostStages = 4;
    static constexpr int kEntries = 64;

    int order;
    VekPCMFrequency freq;
    int stages;
    // Entries side by side, so that a kernel measures eight at a time.
    alignas(32) float rows[kMostStages][kMostOrder][kEntries];
};

LspBook makeBook(int order, VekPCMFrequency freq, int stages) {
    constexpr double pi = std::numbers::pi;
    LspBook book{};
    book.order = order;
    book.freq = freq;
    book.stages = stages;
    // Deviations of the cosines' weights, of a mean square of 1 in each element.
    double weight[LspBook::kMostOrder];
    double sum = 0;
    for (int m = 0; m < order; ++m) {
        sum += 1.0 / (m + 1);
    }
    for (int m = 0; m < order; ++m) {
        weight[m] = std::sqrt(order / sum / (m + 1));
    }
    Gauss gauss(static_cast<uint32_t>(order));
    double deviation = 0.5 * pi / (order + 1);
    for (int s = 0; s < stages; ++s) {
        for (int e = 0; e < LspBook::kEntries; ++e) {
            double v[LspBook::kMostOrder] = {};
            for (int m = 0; m < order; ++m) {
                const double g = weight[m] * gauss.next() * std::sqrt((m == 0 ? 1.0 : 2.0) / order);
                for (int i = 0; i < order; ++i) {
                    v[i] += g * std::cos(pi * m * (i + 0.5) / order);
                }
            }
            for (int i = 0; i < order; ++i) {
                const double mean = s == 0 ? pi * (i + 1) / (order + 1) : 0;
                book.rows[s][i][e] = static_cast<float>(mean + deviation * v[i]);
            }
        }
        deviation *= 0.72;
    }
    return book;
}

// Made at first use: few programs that load the library quantise with them.
const LspBook* bookOf(int order, VekPCMFrequency freq) {
    static const std::array<LspBook, 3> books = {makeBook(10, VEK_PCM_FREQ_8000, 4), makeBook(6, VEK_PCM_FREQ_16000, 3),
                                                 makeBook(4, VEK_PCM_FREQ_16000, 3)};
    const auto* const book =
        std::find_if(books.begin(), books.end(), [&](const LspBook& b) { return b.order == order && b.freq == freq; });
    return book == books.end() ? nullptr : book;
}

constexpr float kApart = 0.02F;

// What the stages so far have left of the target, and by which vectors.
struct Survivor {
    float rest[LspBook::kMostOrder];
    int index[LspBook::kMostStages];
};

// 1 / |A| at the frequencies.
void weights(const float* a, const float* lsp, int order, float* w) {
    for (int i = 0; i < order; ++i) {
        const std::complex<double> z = std::polar(1.0, -static_cast<double>(lsp[i]));
        std::complex<double> sum = a[order];
        for (int j = order - 1; j > 0; --j) {
            sum = {sum.real() * z.real() - sum.imag() * z.imag() + a[j], sum.real() * z.imag() + sum.imag() * z.real()};
        }
        const double re = sum.real() * z.real() - sum.imag() * z.imag() + 1;
        const double im = sum.real() * z.imag() + sum.imag() * z.real();
        w[i] = static_cast<float>(1 / (std::sqrt(re * re + im * im) + 1e-6));
    }
}

struct Choice {
    float error;
    int survivor;
    int entry;
};

// The best vectors of a stage behind each survivor, at most `most`, the best first.
int choose(const LspBook& book, int stage, const Survivor* from, int count, const float* w, int most, Choice* best) {
    int found = 0;
    for (int k = 0; k < count; ++k) {
        alignas(32) float errors[LspBook::kEntries];
        rtaKernels().distances(book.rows[stage][0], LspBook::kEntries, book.order, from[k].rest, w, errors);
        for (int e = 0; e < LspBook::kEntries; ++e) {
            if (found == most && !(errors[e] < best[most - 1].error)) {
                continue;
            }
            int at = found < most ? found++ : most - 1;
            for (; at > 0 && errors[e] < best[at - 1].error; --at) {
                best[at] = best[at - 1];
            }
            best[at] = {errors[e], k, e};
        }
    }
    return found;
}

// Rising, each at least kApart from the one before and from the ends.
void keepApart(float* lsp, int n) {
    float least = kApart;
    for (int i = 0; i < n; ++i) {
        lsp[i] = std::max(lsp[i], least);
        least = lsp[i] + kApart;
    }
    float most = std::numbers::pi_v<float> - kApart;
    for (int i = n - 1; i >= 0; --i) {
        lsp[i] = std::min(lsp[i], most);
        most = lsp[i] - kApart;
    }
}

} // namespace

VekStatus veksLSPQuant_RTA_32f(const Vek32f* pSrcLSP, const Vek32f* pSrcLPC, Vek32f* pDstLSP, int order,
                               int* pDstLSPIndex, VekPCMFrequency freq, int complexity) {
    constexpr int kMostSurvivors = 16;
    if (anyNull(pSrcLSP, pSrcLPC, pDstLSP, pDstLSPIndex)) {
        return vekStsNullPtrErr;
    }
    const LspBook* const book = bookOf(order, freq);
    if (book == nullptr || complexity < 1 || complexity > kMostSurvivors) {
        return vekStsRangeErr;
    }
    float w[LspBook::kMostOrder];
    weights(pSrcLPC, pSrcLSP, order, w);
    Survivor buffers[2][kMostSurvivors];
    Survivor* now = buffers[0];
    Survivor* next = buffers[1];
    std::memcpy(now[0].rest, pSrcLSP, static_cast<size_t>(order) * sizeof(float));
    int count = 1;
    for (int s = 0; s < book->stages; ++s) {
        Choice best[kMostSurvivors];
        count = choose(*book, s, now, count, w, s + 1 < book->stages ? complexity : 1, best);
        for (int k = 0; k < count; ++k) {
            next[k] = now[best[k].survivor];
            next[k].index[s] = best[k].entry;
            for (int i = 0; i < order; ++i) {
                next[k].rest[i] -= book->rows[s][i][best[k].entry];
            }
        }
        std::swap(now, next);
    }
    for (int i = 0; i < order; ++i) {
        float sum = 0;
        for (int s = 0; s < book->stages; ++s) {
            sum += book->rows[s][i][now[0].index[s]];
        }
        pDstLSP[i] = sum;
    }
    keepApart(pDstLSP, order);
    std::copy_n(now[0].index, book->stages, pDstLSPIndex);
    return vekStsNoErr;
}
