// Full-band and subband filters of echo cancellers and their learning: against double precision and 64-bit or wider
// integers at every level, an echo path that is learnt, saturation, refusals.
#include <cmath>
#include <cstring>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::clip;
using Matrix = std::vector<std::vector<Vek32sc>>;
__extension__ typedef __int128 Wide;

std::vector<Vek32sc> complexNoise(std::mt19937& random, int n, int64_t peak) {
    std::uniform_int_distribution<int64_t> pick(-peak, peak - 1);
    std::vector<Vek32sc> v(static_cast<size_t>(n));
    for (Vek32sc& e : v) {
        e = {static_cast<int32_t>(pick(random)), static_cast<int32_t>(pick(random))};
    }
    return v;
}

template <class T>
std::vector<T*> rowsOf(std::vector<std::vector<T>>& m) {
    std::vector<T*> rows;
    for (auto& row : m) {
        rows.push_back(row.data());
    }
    return rows;
}

Matrix matrix(std::mt19937& random, int rows, int len, int64_t peak) {
    Matrix m;
    for (int i = 0; i < rows; i++) {
        m.push_back(complexNoise(random, len, peak));
    }
    return m;
}

int32_t narrowed(Wide v, int scale) {
    v = scale >= 0 ? v >> scale : v * (Wide{1} << -scale);
    return static_cast<int32_t>(v > INT32_MAX ? Wide{INT32_MAX} : v < INT32_MIN ? Wide{INT32_MIN} : v);
}

bool same(const std::vector<Vek32sc>& a, const std::vector<Vek32sc>& b) {
    return std::memcmp(a.data(), b.data(), a.size() * sizeof(Vek32sc)) == 0;
}

TEST(VekEcFir, IntegerFormIsTheExactSumRoundedAndSaturated) {
    atEveryLevel([] {
        std::mt19937 random(1);
        // More samples than a block holds, too.
        for (const auto& [taps, len] : {std::pair{1, 20}, {7, 70}, {8, 20}, {128, 70}, {256, 33}, {4096, 20}}) {
            for (const int peak : {300, 32767}) {
                const Samples ref = noise(random, taps + len, -peak - 1, peak);
                const Samples speech = noise(random, len, -peak - 1, peak);
                const Samples coef = noise(random, taps, -peak - 1, peak);
                Samples out(static_cast<size_t>(len));
                ASSERT_EQ(vekStsNoErr,
                          veksFIR_EC_16s(ref.data() + taps, speech.data(), out.data(), len, coef.data(), taps));
                for (int i = 0; i < len; i++) {
                    int64_t sum = 0;
                    for (int j = 0; j < taps; j++) {
                        sum += int64_t{coef[j]} * ref[taps + i - j];
                    }
                    ASSERT_EQ(clip(speech[i] - ((sum + 16384) >> 15), 16), out[i]) << taps << " " << i;
                }
            }
        }
    });
}

TEST(VekEcFir, FloatFormIsTheSumWithinItsPrecision) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (const int taps : {1, 7, 8, 128, 256}) {
            for (const int len : {1, 8, 100}) {
                const Floats ref = floats(random, taps + len, 1);
                const Floats speech = floats(random, len, 1);
                const Floats coef = floats(random, taps, 1);
                Floats out(static_cast<size_t>(len));
                ASSERT_EQ(vekStsNoErr,
                          veksFIR_EC_32f(ref.data() + taps, speech.data(), out.data(), len, coef.data(), taps));
                for (int i = 0; i < len; i++) {
                    double sum = speech[i];
                    for (int j = 0; j < taps; j++) {
                        sum -= static_cast<double>(coef[j]) * ref[taps + i - j];
                    }
                    ASSERT_NEAR(sum, out[i], 2e-5) << taps << " " << i;
                }
            }
        }
    });
}

TEST(VekEcNlms, FloatFormFollowsDoublePrecision) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const int taps : {1, 8, 13, 24, 128}) {
            const int len = 40;
            const Floats ref = floats(random, taps + len + 1, 1);
            const float* now = ref.data() + taps + 1;
            const Floats speech = floats(random, len, 1);
            Floats step = floats(random, len, 1);
            for (float& s : step) {
                s = std::fabs(s);
            }
            Floats coef = floats(random, taps, 1);
            std::vector<double> exact(coef.begin(), coef.end());
            Floats out(static_cast<size_t>(len));
            float err = 0.25F;
            double exactErr = err;
            ASSERT_EQ(vekStsNoErr,
                      veksNLMS_EC_32f(now, speech.data(), step.data(), out.data(), len, coef.data(), taps, &err));
            for (int i = 0; i < len; i++) {
                double energy = 1e-9 * taps;
                for (int j = 0; j < taps; j++) {
                    energy += static_cast<double>(now[i - 1 - j]) * now[i - 1 - j];
                }
                double echo = 0;
                for (int j = 0; j < taps; j++) {
                    exact[j] += step[i] * exactErr * now[i - 1 - j] / energy;
                    echo += exact[j] * now[i - j];
                }
                exactErr = speech[i] - echo;
                ASSERT_NEAR(exactErr, out[i], 1e-3 * (1 + std::fabs(exactErr))) << taps << " " << i;
            }
            EXPECT_EQ(err, out.back());
            for (int j = 0; j < taps; j++) {
                ASSERT_NEAR(exact[j], coef[j], 1e-3 * (1 + std::fabs(exact[j]))) << taps << " " << j;
            }
        }
    });
}

TEST(VekEcNlms, IntegerFormFollowsItsDefinitionWithinTheRoundingOfTheFactor) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (const int taps : {1, 8, 20, 128}) {
            for (const int peak : {3, 200, 32767}) {
                const int len = 8;
                const Samples ref = noise(random, taps + len + 1, -peak - 1, peak);
                const int16_t* now = ref.data() + taps + 1;
                const Samples speech = noise(random, len, -2000, 2000);
                const Samples step = noise(random, len, 0, 32767);
                Samples coef = noise(random, taps, -9000, 9000);
                std::vector<double> exact(coef.begin(), coef.end());
                Samples out(len);
                int16_t err = 1500;
                double before = err;
                ASSERT_EQ(vekStsNoErr,
                          veksNLMS_EC_16s(now, speech.data(), step.data(), out.data(), len, coef.data(), taps, &err));
                for (int i = 0; i < len; i++) {
                    double energy = 16.0 * taps;
                    for (int j = 0; j < taps; j++) {
                        energy += static_cast<double>(now[i - 1 - j]) * now[i - 1 - j];
                    }
                    const double factor = std::min(std::max(step[i] * before / energy, -32767.0), 32767.0);
                    for (int j = 0; j < taps; j++) {
                        exact[j] += factor * now[i - 1 - j];
                        exact[j] = std::min(std::max(exact[j], -32768.0), 32767.0);
                    }
                    before = out[i]; // the errors themselves are the filter's, checked below by its last coefficients
                }
                double echo = 0;
                for (int j = 0; j < taps; j++) {
                    ASSERT_NEAR(exact[j], coef[j], 0.6 * len + 2e-4 * 32768) << taps << " " << peak << " " << j;
                    echo += coef[j] * static_cast<double>(now[len - 1 - j]);
                }
                EXPECT_EQ(err, out.back());
                EXPECT_EQ(clip(speech.back() - static_cast<int64_t>(std::floor(echo / 32768 + 0.5)), 16), err);
            }
        }
    });
}

// A sample's error is that of the coefficients which have learnt before it.
TEST(VekEcNlms, EachErrorIsExactlyTheFiltersAndManySamplesAreAsManyCalls) {
    atEveryLevel([] {
        std::mt19937 random(14);
        for (const int taps : {1, 20, 128}) {
            constexpr int len = 24;
            const Samples ref = noise(random, taps + len + 1, -20000, 20000);
            const int16_t* now = ref.data() + taps + 1;
            const Samples speech = noise(random, len, -30000, 30000);
            const Samples step = noise(random, len, 0, 32767);
            Samples coef = noise(random, taps, -9000, 9000);
            Samples coefWhole = coef;
            Samples whole(len);
            int16_t err = -700;
            int16_t errWhole = err;
            ASSERT_EQ(vekStsNoErr, veksNLMS_EC_16s(now, speech.data(), step.data(), whole.data(), len, coefWhole.data(),
                                                   taps, &errWhole));
            for (int i = 0; i < len; i++) {
                int16_t out = 0;
                ASSERT_EQ(vekStsNoErr,
                          veksNLMS_EC_16s(now + i, &speech[i], &step[i], &out, 1, coef.data(), taps, &err));
                double echo = 0;
                for (int j = 0; j < taps; j++) {
                    echo += coef[j] * static_cast<double>(now[i - j]);
                }
                ASSERT_EQ(clip(speech[i] - static_cast<int64_t>(std::floor(echo / 32768 + 0.5)), 16), out) << taps;
                ASSERT_EQ(out, whole[i]) << taps << ' ' << i;
            }
            EXPECT_EQ(coefWhole, coef);
            EXPECT_EQ(errWhole, err);
        }
    });
}

TEST(VekEcNlms, LevelsGiveTheSameIntegers) {
    std::vector<Samples> results;
    atEveryLevel([&results] {
        std::mt19937 random(5);
        const Samples ref = noise(random, 4000, -32768, 32767);
        const Samples speech = noise(random, 4000, -32768, 32767);
        const Samples step(4000, 32767);
        Samples coef(133);
        Samples out(3800);
        int16_t err = -32768;
        ASSERT_EQ(vekStsNoErr, veksNLMS_EC_16s(ref.data() + 150, speech.data(), step.data(), out.data(), 3800,
                                               coef.data(), 133, &err));
        out.insert(out.end(), coef.begin(), coef.end());
        results.push_back(out);
    });
    for (const Samples& r : results) {
        EXPECT_EQ(results.front(), r);
    }
}

// A decaying path with 12 dB of loss; the return loss is what the error is below the echo, over the last second.
template <class T, class Run>
double returnLoss(int taps, double scale, const Run& run) {
    std::mt19937 random(6);
    std::normal_distribution<double> normal;
    std::vector<double> path(static_cast<size_t>(taps));
    double energy = 0;
    for (int j = 0; j < taps; j++) {
        path[j] = normal(random) * std::exp(-j / (taps / 6.0));
        energy += path[j] * path[j];
    }
    for (double& p : path) {
        p *= 0.25 / std::sqrt(energy);
    }
    const int samples = 24000;
    std::vector<T> ref(static_cast<size_t>(taps + 1 + samples));
    for (T& r : ref) {
        r = static_cast<T>(scale * 0.1 * normal(random));
    }
    std::vector<T> echo(static_cast<size_t>(samples));
    for (int i = 0; i < samples; i++) {
        double sum = 0;
        for (int j = 0; j < taps; j++) {
            sum += path[j] * ref[taps + 1 + i - j];
        }
        echo[i] = static_cast<T>(scale == 1 ? sum : std::lround(sum));
    }
    const std::vector<T> out = run(ref.data() + taps + 1, echo);
    double left = 0;
    double whole = 0;
    for (int i = samples - 8000; i < samples; i++) {
        left += static_cast<double>(out[i]) * out[i];
        whole += static_cast<double>(echo[i]) * echo[i];
    }
    return 10 * std::log10(whole / left);
}

// In blocks of eight with half the full step.
template <class T, class Nlms>
double returnLossOfNlms(double scale, T half, Nlms nlms) {
    return returnLoss<T>(128, scale, [&](const T* ref, const std::vector<T>& echo) {
        std::vector<T> out(echo.size());
        std::vector<T> coef(128);
        const std::vector<T> step(8, half);
        T err = 0;
        for (size_t i = 0; i < echo.size(); i += 8) {
            nlms(ref + i, &echo[i], step.data(), &out[i], 8, coef.data(), 128, &err);
        }
        return out;
    });
}

TEST(VekEcNlms, LearnsAnEchoPathTo80DbInFloatingPoint) {
    atEveryLevel([] { EXPECT_GT(returnLossOfNlms(1, 0.5F, veksNLMS_EC_32f), 80); });
}

TEST(VekEcNlms, LearnsAnEchoPathTo35DbInSixteenBits) {
    atEveryLevel([] { EXPECT_GT(returnLossOfNlms(32768, int16_t{16384}, veksNLMS_EC_16s), 35); });
}

TEST(VekEcNlms, SilenceTeachesNothingAndDividesByNothing) {
    const Floats zeros(60);
    const Floats one(8, 1.0F);
    Floats coef(8, 0.5F);
    Floats out(8);
    float err = 1;
    ASSERT_EQ(vekStsNoErr,
              veksNLMS_EC_32f(zeros.data() + 20, one.data(), one.data(), out.data(), 8, coef.data(), 8, &err));
    EXPECT_EQ(Floats(8, 0.5F), coef);
    EXPECT_EQ(one, out);
}

struct WideSums {
    Wide re = 0;
    Wide im = 0;
};

// The complex sum of a subband over the segments, in 128 bits.
WideSums sumOfProducts(const Matrix& x, const Matrix& c, int k) {
    WideSums sum;
    for (size_t s = 0; s < x.size(); s++) {
        sum.re += Wide{x[s][k].re} * c[s][k].re - Wide{x[s][k].im} * c[s][k].im;
        sum.im += Wide{x[s][k].re} * c[s][k].im + Wide{x[s][k].im} * c[s][k].re;
    }
    return sum;
}

TEST(VekEcSubbandFir, FullFormIsTheWideSumAtEveryScale) {
    atEveryLevel([] {
        std::mt19937 random(7);
        for (const int len : {1, 3, 4, 32, 65}) {
            for (const int segments : {1, 8, 32}) {
                for (const int64_t peak : {int64_t{1} << 12, int64_t{1} << 31}) {
                    Matrix x = matrix(random, segments, len, peak);
                    Matrix c = matrix(random, segments, len, peak);
                    for (int s = 0; s < segments; s++) {
                        x[s][0] = {INT32_MIN, INT32_MIN};
                        c[s][0] = {INT32_MIN, INT32_MIN};
                    }
                    const auto px = rowsOf(x);
                    const auto pc = rowsOf(c);
                    for (const int scale : {-31, -16, 0, 16, 31}) {
                        std::vector<Vek32sc> out(static_cast<size_t>(len));
                        ASSERT_EQ(vekStsNoErr,
                                  veksFIRSubband_EC_32sc_Sfs(px.data(), pc.data(), out.data(), segments, len, scale));
                        for (int k = 0; k < len; k++) {
                            const auto [re, im] = sumOfProducts(x, c, k);
                            ASSERT_EQ(narrowed(re, scale), out[k].re) << len << " " << segments << " " << scale;
                            ASSERT_EQ(narrowed(im, scale), out[k].im) << len << " " << segments << " " << scale;
                        }
                    }
                }
            }
        }
    });
}

TEST(VekEcSubbandFir, LowFormWrapsAt64BitsAndLeavesTheFirstSubbandsAlone) {
    atEveryLevel([] {
        std::mt19937 random(8);
        for (const int64_t peak : {int64_t{1} << 20, int64_t{1} << 31}) {
            const int len = 61;
            const int segments = 17;
            Matrix x = matrix(random, segments, len, peak);
            Matrix c = matrix(random, segments, len, peak);
            const auto px = rowsOf(x);
            const auto pc = rowsOf(c);
            for (const int first : {0, 2, 6, 60}) {
                for (const int scale : {-20, 0, 16, 20}) {
                    std::vector<Vek32sc> out(static_cast<size_t>(len), Vek32sc{7, 8});
                    ASSERT_EQ(vekStsNoErr, veksFIRSubbandLow_EC_32sc_Sfs(px.data(), pc.data(), segments, out.data(),
                                                                         first, len, scale));
                    for (int k = 0; k < len; k++) {
                        const auto [re, im] = sumOfProducts(x, c, k);
                        const int32_t wantRe = k < first ? 7 : narrowed(static_cast<int64_t>(re), scale);
                        const int32_t wantIm = k < first ? 8 : narrowed(static_cast<int64_t>(im), scale);
                        ASSERT_EQ(wantRe, out[k].re) << first << " " << scale << " " << k;
                        ASSERT_EQ(wantIm, out[k].im) << first << " " << scale << " " << k;
                    }
                }
            }
        }
    });
}

TEST(VekEcSubbandUpdate, FullFormRoundsAndSaturates) {
    atEveryLevel([] {
        std::mt19937 random(9);
        for (const int len : {1, 5, 32, 64}) {
            for (const int shift : {1, 16, 31}) {
                for (const int64_t peak : {int64_t{1} << 14, int64_t{1} << 31}) {
                    const int segments = 9;
                    Matrix x = matrix(random, segments, len, peak);
                    Matrix c = matrix(random, segments, len, int64_t{1} << 31);
                    std::vector<Vek32sc> e = complexNoise(random, len, peak);
                    x[0][0] = {INT32_MIN, INT32_MIN};
                    e[0] = {INT32_MIN, INT32_MIN};
                    std::vector<int32_t> step(static_cast<size_t>(len));
                    for (int32_t& s : step) {
                        s = complexNoise(random, 1, peak)[0].re;
                    }
                    step[0] = 1 << 20;
                    Matrix want = c;
                    for (int k = 0; k < len; k++) {
                        int64_t pr = clip((int64_t{step[k]} * e[k].re + 16384) >> 15, 32);
                        int64_t pi = clip((int64_t{step[k]} * e[k].im + 16384) >> 15, 32);
                        pr = std::max<int64_t>(pr, -INT32_MAX);
                        pi = std::max<int64_t>(pi, -INT32_MAX);
                        const Wide half = Wide{1} << (shift - 1);
                        for (int s = 0; s < segments; s++) {
                            const Wide re = (Wide{x[s][k].re} * pr + Wide{x[s][k].im} * pi + half) >> shift;
                            const Wide im = (Wide{x[s][k].re} * pi - Wide{x[s][k].im} * pr + half) >> shift;
                            want[s][k] = {narrowed(want[s][k].re + re, 0), narrowed(want[s][k].im + im, 0)};
                        }
                    }
                    const auto px = rowsOf(x);
                    const auto pc = rowsOf(c);
                    ASSERT_EQ(vekStsNoErr, veksFIRSubbandCoeffUpdate_EC_32sc_I(step.data(), px.data(), e.data(),
                                                                               const_cast<Vek32sc**>(pc.data()),
                                                                               segments, len, shift));
                    for (int s = 0; s < segments; s++) {
                        ASSERT_TRUE(same(want[s], c[s])) << len << " " << shift << " " << s;
                    }
                }
            }
        }
    });
}

TEST(VekEcSubbandUpdate, LowFormCutsOffWrapsTellsTheProductsAndLeavesTheFirstSubbandsAlone) {
    atEveryLevel([] {
        std::mt19937 random(10);
        for (const int shift : {1, 16, 31}) {
            for (const int first : {0, 2, 6}) {
                const int len = 41;
                const int segments = 8;
                Matrix x = matrix(random, segments, len, int64_t{1} << 31);
                Matrix c = matrix(random, segments, len, int64_t{1} << 31);
                const std::vector<Vek32sc> e = complexNoise(random, len, int64_t{1} << 31);
                std::vector<int32_t> step(static_cast<size_t>(len));
                for (int32_t& s : step) {
                    s = complexNoise(random, 1, 1 << 20)[0].re;
                }
                Matrix want = c;
                std::vector<Vek32sc> product(static_cast<size_t>(len), Vek32sc{3, 4});
                std::vector<Vek32sc> wantProduct = product;
                for (int k = first; k < len; k++) {
                    const auto pr = static_cast<int32_t>((int64_t{step[k]} * e[k].re) >> 15);
                    const auto pi = static_cast<int32_t>((int64_t{step[k]} * e[k].im) >> 15);
                    wantProduct[k] = {pr, pi};
                    for (int s = 0; s < segments; s++) {
                        const Wide re = (Wide{x[s][k].re} * pr + Wide{x[s][k].im} * pi) >> shift;
                        const Wide im = (Wide{x[s][k].re} * pi - Wide{x[s][k].im} * pr) >> shift;
                        want[s][k] = {static_cast<int32_t>(want[s][k].re + re),
                                      static_cast<int32_t>(want[s][k].im + im)};
                    }
                }
                const auto px = rowsOf(x);
                const auto pc = rowsOf(c);
                ASSERT_EQ(vekStsNoErr, veksFIRSubbandLowCoeffUpdate_EC_32sc_I(
                                           px.data(), e.data(), const_cast<Vek32sc**>(pc.data()), segments,
                                           product.data(), step.data(), first, len, shift));
                EXPECT_TRUE(same(wantProduct, product));
                for (int s = 0; s < segments; s++) {
                    ASSERT_TRUE(same(want[s], c[s])) << shift << " " << first << " " << s;
                }
            }
        }
    });
}

TEST(VekEcSubbandUpdate, AffineProjectionAddsAllItsErrors) {
    atEveryLevel([] {
        std::mt19937 random(11);
        const int len = 65;
        const int segments = 12;
        for (const int order : {1, 4, 16}) {
            const auto rows = [&random](int n) {
                std::vector<std::vector<Vek32fc>> m(static_cast<size_t>(n));
                for (auto& row : m) {
                    const Floats v = floats(random, 2 * len, 1);
                    for (int k = 0; k < len; k++) {
                        row.push_back({v[2 * k], v[2 * k + 1]});
                    }
                }
                return m;
            };
            auto x = rows(segments + order - 1);
            auto e = rows(order);
            auto c = rows(segments);
            std::vector<std::vector<double>> step(static_cast<size_t>(order));
            for (auto& row : step) {
                const Floats v = floats(random, len, 1);
                row.assign(v.begin(), v.end());
            }
            const auto old = c;
            const auto px = rowsOf(x);
            const auto pe = rowsOf(e);
            const auto ps = rowsOf(step);
            auto pc = rowsOf(c);
            ASSERT_EQ(vekStsNoErr, veksFIRSubbandAPCoeffUpdate_EC_32fc_I(ps.data(), px.data(), pe.data(), pc.data(),
                                                                         segments, len, order));
            for (int s = 0; s < segments; s++) {
                for (int k = 0; k < len; k++) {
                    double re = old[s][k].re;
                    double im = old[s][k].im;
                    for (int p = 0; p < order; p++) {
                        const Vek32fc a = x[s + p][k];
                        re += step[p][k] *
                              (static_cast<double>(a.re) * e[p][k].re + static_cast<double>(a.im) * e[p][k].im);
                        im += step[p][k] *
                              (static_cast<double>(a.re) * e[p][k].im - static_cast<double>(a.im) * e[p][k].re);
                    }
                    ASSERT_NEAR(re, c[s][k].re, 1e-5);
                    ASSERT_NEAR(im, c[s][k].im, 1e-5);
                }
            }
        }
    });
}

TEST(VekEcFilterRefusals, ComeBeforeAnythingIsWritten) {
    const Samples s(600, 1);
    const Floats f(600, 1.0F);
    Samples out(8, 5);
    Samples coef(8, 5);
    Floats outF(8, 5.0F);
    Floats coefF(8, 5.0F);
    int16_t err = 5;
    float errF = 5;
    const Samples bad(8, -1);
    const int16_t* r = s.data() + 300;
    const float* rf = f.data() + 300;
    expectNullsRefused(veksFIR_EC_16s, r, r, out.data(), 8, r, 8);
    EXPECT_EQ(vekStsSizeErr, veksFIR_EC_16s(r, r, out.data(), 0, r, 8));
    EXPECT_EQ(vekStsSizeErr, veksFIR_EC_16s(r, r, out.data(), 8, r, 4097));
    EXPECT_EQ(vekStsNullPtrErr, veksFIR_EC_32f(rf, nullptr, outF.data(), 8, rf, 8));
    EXPECT_EQ(vekStsSizeErr, veksFIR_EC_32f(rf, rf, outF.data(), 8, rf, 0));
    expectNullsRefused(veksNLMS_EC_16s, r, r, r, out.data(), 8, coef.data(), 8, &err);
    EXPECT_EQ(vekStsSizeErr, veksNLMS_EC_16s(r, r, r, out.data(), -1, coef.data(), 8, &err));
    EXPECT_EQ(vekStsRangeErr, veksNLMS_EC_16s(r, r, bad.data(), out.data(), 8, coef.data(), 8, &err));
    EXPECT_EQ(vekStsNullPtrErr, veksNLMS_EC_32f(rf, rf, rf, outF.data(), 8, nullptr, 8, &errF));
    EXPECT_EQ(vekStsSizeErr, veksNLMS_EC_32f(rf, rf, rf, outF.data(), 8, coefF.data(), 4097, &errF));
    EXPECT_EQ(Samples(8, 5), out);
    EXPECT_EQ(Samples(8, 5), coef);
    EXPECT_EQ(Floats(8, 5.0F), outF);
    EXPECT_EQ(Floats(8, 5.0F), coefF);
    EXPECT_EQ(5, err);

    std::vector<Vek32sc> a(8, Vek32sc{1, 1});
    std::vector<Vek32sc> b(8, Vek32sc{5, 5});
    const std::vector<Vek32sc> kept = b;
    Vek32sc* rows[2] = {a.data(), a.data()};
    Vek32sc* holes[2] = {a.data(), nullptr};
    Vek32sc* target[2] = {b.data(), b.data()};
    const std::vector<int32_t> step(8, 1 << 20);
    EXPECT_EQ(vekStsNullPtrErr, veksFIRSubband_EC_32sc_Sfs(nullptr, rows, b.data(), 2, 8, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksFIRSubband_EC_32sc_Sfs(rows, holes, b.data(), 2, 8, 0));
    EXPECT_EQ(vekStsSizeErr, veksFIRSubband_EC_32sc_Sfs(rows, rows, b.data(), 0, 8, 0));
    EXPECT_EQ(vekStsSizeErr, veksFIRSubband_EC_32sc_Sfs(rows, rows, b.data(), 2, 4097, 0));
    EXPECT_EQ(vekStsScaleRangeErr, veksFIRSubband_EC_32sc_Sfs(rows, rows, b.data(), 2, 8, 32));
    EXPECT_EQ(vekStsNullPtrErr, veksFIRSubbandLow_EC_32sc_Sfs(rows, rows, 2, nullptr, 0, 8, 0));
    EXPECT_EQ(vekStsSizeErr, veksFIRSubbandLow_EC_32sc_Sfs(rows, rows, 2, b.data(), 8, 8, 0));
    EXPECT_EQ(vekStsScaleRangeErr, veksFIRSubbandLow_EC_32sc_Sfs(rows, rows, 2, b.data(), 0, 8, -32));
    EXPECT_EQ(vekStsNullPtrErr, veksFIRSubbandCoeffUpdate_EC_32sc_I(nullptr, rows, a.data(), target, 2, 8, 1));
    EXPECT_EQ(vekStsNullPtrErr, veksFIRSubbandCoeffUpdate_EC_32sc_I(step.data(), holes, a.data(), target, 2, 8, 1));
    EXPECT_EQ(vekStsScaleRangeErr, veksFIRSubbandCoeffUpdate_EC_32sc_I(step.data(), rows, a.data(), target, 2, 8, 0));
    EXPECT_EQ(vekStsScaleRangeErr,
              veksFIRSubbandLowCoeffUpdate_EC_32sc_I(rows, a.data(), target, 2, b.data(), step.data(), 0, 8, 32));
    EXPECT_EQ(vekStsSizeErr,
              veksFIRSubbandLowCoeffUpdate_EC_32sc_I(rows, a.data(), target, 2, b.data(), step.data(), -1, 8, 1));
    EXPECT_EQ(vekStsNullPtrErr,
              veksFIRSubbandLowCoeffUpdate_EC_32sc_I(rows, a.data(), target, 2, nullptr, step.data(), 0, 8, 1));
    EXPECT_TRUE(same(kept, b));
    Vek32fc c[2] = {{1, 1}, {1, 1}};
    Vek32fc* rowsF[2] = {c, c};
    const double one = 1;
    const double* steps[1] = {&one};
    EXPECT_EQ(vekStsNullPtrErr, veksFIRSubbandAPCoeffUpdate_EC_32fc_I(nullptr, rowsF, rowsF, rowsF, 2, 1, 1));
    EXPECT_EQ(vekStsSizeErr, veksFIRSubbandAPCoeffUpdate_EC_32fc_I(steps, rowsF, rowsF, rowsF, 2, 1, 17));
    EXPECT_EQ(vekStsSizeErr, veksFIRSubbandAPCoeffUpdate_EC_32fc_I(steps, rowsF, rowsF, rowsF, 2, 1, 0));
    EXPECT_EQ(1, c[0].re);
}

} // namespace
