// Real-time audio: the quantiser of line spectral pairs against its definition in double precision.
#include "rta_reference.h"
#include "veksc.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using namespace rtaref;

// The quantiser's vectors by their rule: [stage][entry].
using Book = std::vector<std::vector<Doubles>>;

Book bookOf(int order, int stages) {
    const auto n = static_cast<size_t>(order);
    double harmonic = 0;
    for (int m = 1; m <= order; ++m) {
        harmonic += 1.0 / m;
    }
    Gauss gauss(static_cast<uint32_t>(order));
    Book book(static_cast<size_t>(stages));
    for (int s = 0; s < stages; ++s) {
        const double deviation = 0.5 * std::pow(0.72, s) * kPi / (order + 1);
        for (int e = 0; e < 64; ++e) {
            Doubles v(n);
            for (int m = 0; m < order; ++m) {
                const double g = gauss.next() * std::sqrt(1 / harmonic / (m + 1)) * (m == 0 ? 1 : std::sqrt(2.0));
                for (size_t i = 0; i < n; ++i) {
                    v[i] += deviation * g * std::cos(kPi * m * (static_cast<double>(i) + 0.5) / order);
                }
            }
            for (size_t i = 0; s == 0 && i < n; ++i) {
                v[i] += kPi * (static_cast<double>(i) + 1) / (order + 1);
            }
            book[static_cast<size_t>(s)].push_back(v);
        }
    }
    return book;
}

struct LspCase {
    int order;
    VekPCMFrequency freq;
    int stages;
};
constexpr LspCase kLspCases[] = {{10, VEK_PCM_FREQ_8000, 4}, {6, VEK_PCM_FREQ_16000, 3}, {4, VEK_PCM_FREQ_16000, 3}};

// Pairs around their mean places, and the filter of them.
struct Spectrum {
    Floats lsp;
    Floats lpc;
    Doubles weight;
    Spectrum(std::mt19937& random, int order) : lpc(static_cast<size_t>(order) + 1) {
        std::normal_distribution<double> normal(0, 0.45);
        double last = 0.03;
        for (int i = 1; i <= order; ++i) {
            const double step = kPi / (order + 1);
            last = std::clamp(step * (i + normal(random)), last + 0.05, kPi - 0.05 * (order + 1 - i));
            lsp.push_back(static_cast<float>(last));
        }
        EXPECT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(lsp.data(), lpc.data(), order));
        for (const float w : lsp) {
            std::complex<double> sum = 0;
            for (size_t j = 0; j < lpc.size(); ++j) {
                sum += std::polar(double{lpc[j]}, -double{1} * w * static_cast<double>(j));
            }
            weight.push_back(1 / std::abs(sum));
        }
    }
    double error(const Doubles& v) const {
        double sum = 0;
        for (size_t i = 0; i < v.size(); ++i) {
            sum += weight[i] * std::pow(lsp[i] - v[i], 2);
        }
        return sum;
    }
};

Doubles sumOf(const Book& book, const int* index) {
    Doubles sum(book[0][0].size());
    for (size_t s = 0; s < book.size(); ++s) {
        const Doubles& v = book[s][static_cast<size_t>(index[s])];
        std::transform(sum.begin(), sum.end(), v.begin(), sum.begin(), std::plus<>());
    }
    return sum;
}

TEST(VekRtaLspQuant, OneSurvivorTakesTheNearestOfEachStage) {
    atEveryLevel([] {
        std::mt19937 random(15);
        for (const LspCase& k : kLspCases) {
            const Book book = bookOf(k.order, k.stages);
            for (int round = 0; round < 50; ++round) {
                const Spectrum x(random, k.order);
                Floats y(static_cast<size_t>(k.order) + 1, 99);
                int index[5] = {-7, -7, -7, -7, -7};
                ASSERT_EQ(vekStsNoErr,
                          veksLSPQuant_RTA_32f(x.lsp.data(), x.lpc.data(), y.data(), k.order, index, k.freq, 1));
                Doubles sum(x.lsp.size());
                for (size_t s = 0; s < book.size(); ++s) {
                    double least = 1e30;
                    double ours = 0;
                    for (size_t e = 0; e < 64; ++e) {
                        Doubles tried = sum;
                        std::transform(tried.begin(), tried.end(), book[s][e].begin(), tried.begin(), std::plus<>());
                        const double error = x.error(tried);
                        least = std::min(least, error);
                        ours = static_cast<int>(e) == index[s] ? error : ours;
                    }
                    ASSERT_NEAR(ours, least, 1e-3 * least + 1e-9);
                    const Doubles& v = book[s][static_cast<size_t>(index[s])];
                    std::transform(sum.begin(), sum.end(), v.begin(), sum.begin(), std::plus<>());
                }
                EXPECT_EQ(index[k.stages], -7);
                EXPECT_EQ(y.back(), 99);
                for (size_t i = 0; i < sum.size(); ++i) {
                    const bool apart = sum[i] > 0.02 && sum[i] < kPi - 0.02;
                    if (apart &&
                        std::adjacent_find(sum.begin(), sum.end(), [](double a, double b) { return b < a + 0.021; }) ==
                            sum.end() &&
                        sum[0] > 0.02 && sum.back() < kPi - 0.02) {
                        ASSERT_NEAR(y[i], sum[i], 1e-5);
                    }
                }
            }
        }
    });
}

// The least error of all sums of one vector of each of three stages.
double leastOfAll(const Spectrum& x, const Book& book) {
    const auto add = [](const Doubles& a, const Doubles& b, Doubles& sum) {
        std::transform(a.begin(), a.end(), b.begin(), sum.begin(), std::plus<>());
    };
    Doubles two(book[0][0].size());
    Doubles three = two;
    double least = 1e30;
    for (const Doubles& first : book[0]) {
        for (const Doubles& second : book[1]) {
            add(first, second, two);
            for (const Doubles& third : book[2]) {
                add(two, third, three);
                least = std::min(least, x.error(three));
            }
        }
    }
    return least;
}

TEST(VekRtaLspQuant, MoreSurvivorsComeNearerAndNearTheBestOfAll) {
    std::mt19937 random(16);
    for (const LspCase& k : kLspCases) {
        const Book book = bookOf(k.order, k.stages);
        double errors[3] = {};
        double best = 0;
        for (int round = 0; round < 30; ++round) {
            const Spectrum x(random, k.order);
            int at = 0;
            for (const int complexity : {1, 4, 16}) {
                Floats y(x.lsp.size());
                int index[4];
                ASSERT_EQ(vekStsNoErr, veksLSPQuant_RTA_32f(x.lsp.data(), x.lpc.data(), y.data(), k.order, index,
                                                            k.freq, complexity));
                errors[at++] += x.error(sumOf(book, index));
            }
            if (k.order == 4 && round < 4) {
                best += leastOfAll(x, book);
                EXPECT_LT(best, 1.001 * errors[2]);
                EXPECT_LT(errors[2], 3 * best);
            }
        }
        EXPECT_LT(errors[1], 0.95 * errors[0]) << k.order;
        EXPECT_LT(errors[2], 0.98 * errors[1]) << k.order;
    }
}

TEST(VekRtaLspQuant, OutputRisesFromWhateverCameIn) {
    atEveryLevel([] {
        std::mt19937 random(17);
        for (const LspCase& k : kLspCases) {
            for (int round = 0; round < 50; ++round) {
                const Floats x =
                    round % 2 == 0 ? floatNoise(random, k.order, 10, 20) : floatNoise(random, k.order, -9, 4);
                const Floats a = floatNoise(random, k.order + 1, 10, 20);
                Floats y(x.size());
                int index[4];
                ASSERT_EQ(vekStsNoErr, veksLSPQuant_RTA_32f(x.data(), a.data(), y.data(), k.order, index, k.freq, 8));
                float last = 0;
                for (const float v : y) {
                    ASSERT_GE(v, last + 0.0199F);
                    last = v;
                }
                ASSERT_LE(last, kPi - 0.0199);
                for (int s = 0; s < k.stages; ++s) {
                    ASSERT_TRUE(index[s] >= 0 && index[s] < 64);
                }
            }
        }
    });
}

TEST(VekRtaLspQuant, RefusesWhatItHasNoBookFor) {
    const Floats x(11, 1);
    Floats y(11, 5);
    int index[4] = {5, 5, 5, 5};
    const auto quant = [&](int order, VekPCMFrequency freq, int complexity) {
        return veksLSPQuant_RTA_32f(x.data(), x.data(), y.data(), order, index, freq, complexity);
    };
    EXPECT_EQ(vekStsRangeErr, quant(8, VEK_PCM_FREQ_8000, 4));
    EXPECT_EQ(vekStsRangeErr, quant(10, VEK_PCM_FREQ_16000, 4));
    EXPECT_EQ(vekStsRangeErr, quant(6, VEK_PCM_FREQ_8000, 4));
    EXPECT_EQ(vekStsRangeErr, quant(10, VEK_PCM_FREQ_8000, 0));
    EXPECT_EQ(vekStsRangeErr, quant(10, VEK_PCM_FREQ_8000, 17));
    EXPECT_EQ(y, Floats(11, 5));
    EXPECT_EQ(index[0], 5);
}

} // namespace
