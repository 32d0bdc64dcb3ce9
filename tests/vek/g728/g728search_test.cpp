// Searches of G.728: shape and gain by brute force, the trellis against all its paths, the pitch period against the
// blocks in double precision.
#include "g728_reference.h"

#include "sc/g728/tables_shape.cpp"   // NOLINT(bugprone-suspicious-include): the library hides its tables
#include "sc/g728/tables_trellis.cpp" // NOLINT(bugprone-suspicious-include)

#include <map>
#include <set>

namespace {

using namespace g728ref;
using vek::g728::kGain;
using vek::g728::kShapes;
using vek::g728::kTrellisLevels;
using Adapter = Memory<VeksPostFilterAdapterState_G728>;

TEST(VekG728Energies, AreThoseOfTheFilteredShapes) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (int round = 0; round < 90; ++round) {
            const int loud = round % 3 == 2 ? 32767 : 6000;
            Samples h = noise(random, 5, -loud, loud);
            if (round % 3 == 0) {
                h[0] = 8192;
            }
            Samples e(128);
            ASSERT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(h.data(), e.data()));
            for (size_t j = 0; j < 128; ++j) {
                double energy = 0;
                for (size_t k = 0; k < 5; ++k) {
                    double y = 0;
                    for (size_t i = 0; i <= k; ++i) {
                        y += h[k - i] / 8192.0 * kShapes[j][i] / 2048.0;
                    }
                    y = std::min(std::max(y, -32.0), 32.0); // filtered samples have 16 bits in Q10
                    energy += y * y;
                }
                const double want = std::min(32 * energy, 32767.0);
                ASSERT_NEAR(e[j], want, 0.51 + 0.03 * std::sqrt(want)) << j;
            }
        }
        for (const int16_t extreme : {32767, -32768}) {
            const Samples h(5, extreme);
            Samples e(128);
            ASSERT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(h.data(), e.data()));
            EXPECT_EQ(*std::max_element(e.begin(), e.end()), 32767);
            EXPECT_GE(*std::min_element(e.begin(), e.end()), 0);
        }
        const Samples zero(5);
        Samples e(128, 1);
        ASSERT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(zero.data(), e.data()));
        EXPECT_EQ(e, Samples(128));
    });
}

struct Found {
    int16_t shape = -1;
    int16_t gain = -1;
    int16_t code = -1;
    bool operator==(const Found&) const = default;
};

Found search(const Samples& pn, const Samples& e, VekSpchBitRate rate) {
    Found f;
    EXPECT_EQ(vekStsNoErr, veksCodebookSearch_G728_16s(pn.data(), e.data(), &f.shape, &f.gain, &f.code, rate));
    return f;
}

double gainOf(int16_t gain) {
    return (gain < 4 ? 1 : -1) * kGain[gain % 4] / 8192.0;
}

// g^2 E - 2 g P of an entry, in real numbers.
double distortion(const Samples& pn, const Samples& e, size_t shape, int16_t gain) {
    double p = 0;
    for (size_t k = 0; k < 5; ++k) {
        p += pn[k] / 128.0 * kShapes[shape][k] / 2048.0;
    }
    const double g = gainOf(gain);
    return g * g * e[shape] / 32.0 - 2 * g * p;
}

// The subsets anew: from shape 0 on always the one farthest from all before, signs aside.
std::vector<size_t> farthestShapes(size_t count) {
    std::vector<size_t> chosen = {0};
    const auto cosine = [](size_t a, size_t b) {
        double ab = 0;
        double aa = 0;
        double bb = 0;
        for (size_t k = 0; k < 5; ++k) {
            ab += double{1} * kShapes[a][k] * kShapes[b][k];
            aa += double{1} * kShapes[a][k] * kShapes[a][k];
            bb += double{1} * kShapes[b][k] * kShapes[b][k];
        }
        return std::abs(ab) / std::sqrt(aa * bb);
    };
    while (chosen.size() < count) {
        double least = 2;
        size_t best = 0;
        for (size_t j = 0; j < 128; ++j) {
            double most = 0;
            for (const size_t c : chosen) {
                most = std::max(most, cosine(j, c));
            }
            if (most < least) {
                least = most;
                best = j;
            }
        }
        chosen.push_back(best);
    }
    return chosen;
}

TEST(VekG728Codebook, SearchFindsTheBestOfAllPairs) {
    struct Rate {
        VekSpchBitRate rate;
        std::vector<size_t> shapes;
        std::vector<int16_t> gains;
    };
    std::vector<size_t> all(128);
    for (size_t j = 0; j < all.size(); ++j) {
        all[j] = j;
    }
    const Rate rates[] = {{VEK_SPCHBR_16000, all, {0, 1, 2, 3, 4, 5, 6, 7}},
                          {VEK_SPCHBR_12800, farthestShapes(64), {1, 2, 5, 6}},
                          {VEK_SPCHBR_9600, farthestShapes(16), {1, 2, 5, 6}}};
    atEveryLevel([&] {
        std::mt19937 random(2);
        for (const Rate& r : rates) {
            std::set<int16_t> codes;
            for (int round = 0; round < 800; ++round) {
                Samples h = noise(random, 5, -5000, 5000);
                h[0] = 8192;
                Samples e(128);
                ASSERT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(h.data(), e.data()));
                const int loud = 200 << (round % 8);
                const Samples pn = noise(random, 5, -loud, loud);
                const Found found = search(pn, e, r.rate);
                double best = 1e9;
                for (const size_t shape : r.shapes) {
                    for (const int16_t gain : r.gains) {
                        best = std::min(best, distortion(pn, e, shape, gain));
                    }
                }
                const double got = distortion(pn, e, static_cast<size_t>(found.shape), found.gain);
                // Products are rounded to Q5, gains to Q12; coarser for loud targets.
                ASSERT_LE(got, best + 0.2 + 2e-4 * std::abs(best)) << round;
                // The code word tells both places.
                const auto gains = static_cast<int16_t>(r.gains.size());
                ASSERT_EQ(r.shapes[static_cast<size_t>(found.code / gains)], static_cast<size_t>(found.shape));
                ASSERT_EQ(r.gains[static_cast<size_t>(found.code % gains)], found.gain);
                codes.insert(found.code);
            }
            EXPECT_GT(codes.size(), r.shapes.size());
            EXPECT_LT(*codes.rbegin(), static_cast<int>(r.shapes.size() * r.gains.size()));
        }
    });
}

TEST(VekG728Codebook, LevelsOfTheKernelsAgreeAtEdges) {
    std::map<int, Found> first;
    atEveryLevel([&] {
        std::mt19937 random(3);
        int at = 0;
        for (int round = 0; round < 300; ++round) {
            Samples e = noise(random, 128, -32768, 32767);
            Samples pn = noise(random, 5, -32768, 32767);
            if (round % 10 == 0) {
                e.assign(128, static_cast<int16_t>(round % 20 == 0 ? 0 : 32767));
            }
            if (round % 15 == 0) {
                pn.assign(5, static_cast<int16_t>(round % 30 == 0 ? 0 : -32768));
            }
            for (const VekSpchBitRate rate : {VEK_SPCHBR_16000, VEK_SPCHBR_12800, VEK_SPCHBR_9600}) {
                const Found f = search(pn, e, rate);
                ASSERT_EQ(first.try_emplace(at, f).first->second, f) << round;
                ++at;
            }
        }
    });
}

TEST(VekG728Codebook, OfEqualEntriesTheFirstIsTaken) {
    atEveryLevel([] {
        const Samples zero(5);
        EXPECT_EQ(search(zero, Samples(128, 100), VEK_SPCHBR_16000), (Found{0, 0, 0}));
        // Without energies and target all entries are equal; negative energies are none.
        EXPECT_EQ(search(zero, Samples(128, -7), VEK_SPCHBR_16000), (Found{0, 0, 0}));
        EXPECT_EQ(search(zero, Samples(128), VEK_SPCHBR_9600), (Found{0, 1, 0}));
        // One energy less than the others decides.
        for (const int16_t j : {1, 7, 8, 63, 127}) {
            Samples e(128, 100);
            e[static_cast<size_t>(j)] = 99;
            EXPECT_EQ(search(zero, e, VEK_SPCHBR_16000), (Found{j, 0, static_cast<int16_t>(8 * j)}));
        }
    });
}

TEST(VekG728Codebook, AShapeAsTargetIsFoundWithItsGain) {
    const Samples impulse = {8192, 0, 0, 0, 0};
    Samples e(128);
    ASSERT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(impulse.data(), e.data()));
    for (size_t j = 0; j < 128; ++j) {
        for (int16_t g = 0; g < 8; ++g) {
            Samples pn(5);
            bool fits = true;
            for (size_t k = 0; k < 5; ++k) {
                const double x = gainOf(g) * kShapes[j][k] / 16;
                fits = fits && std::abs(x) < 32767;
                pn[k] = static_cast<int16_t>(std::lround(x));
            }
            if (fits) {
                const Found found = search(pn, e, VEK_SPCHBR_16000);
                ASSERT_EQ(found,
                          (Found{static_cast<int16_t>(j), g, static_cast<int16_t>(8 * j + static_cast<size_t>(g))}));
            }
        }
    }
}

TEST(VekG728Codebook, RefusesOtherRates) {
    const Samples e(128);
    Found f;
    for (const VekSpchBitRate rate : {VEK_SPCHBR_24000, VEK_SPCHBR_DTX, VEK_SPCHBR_8850}) {
        EXPECT_EQ(vekStsBitRateErr, veksCodebookSearch_G728_16s(e.data(), e.data(), &f.shape, &f.gain, &f.code, rate));
    }
    EXPECT_EQ(f, Found{});
}

// The 64 levels, rising; level i belongs to subset i modulo 4.
int16_t level(int i) {
    return static_cast<int16_t>(i < 32 ? -kTrellisLevels[31 - i] : kTrellisLevels[i - 32]);
}

TEST(VekG728Trellis, LevelsAreTheCentroidsOfTheirCells) {
    const auto density = [](double x) { return std::exp(-x * x / 2) / std::sqrt(2 * 3.14159265358979); };
    const auto tail = [](double x) { return 0.5 * std::erfc(x / std::sqrt(2.0)); };
    for (int i = 0; i < 32; ++i) {
        const double y = kTrellisLevels[i] / 4096.0;
        const double low = i == 0 ? 0 : (kTrellisLevels[i - 1] / 4096.0 + y) / 2;
        const double high = i == 31 ? 40 : (kTrellisLevels[i + 1] / 4096.0 + y) / 2;
        EXPECT_NEAR((density(low) - density(high)) / (tail(low) - tail(high)), y, 2e-4) << i;
    }
}

// The trellis from its parity polynomials 13 and 4: h0 = D^3 + D + 1 on the lower bit of the subset, h1 = D^2 on the
// upper one. A node is what the past contributes to the next three lower bits.
int nextNode(int node, int upper) {
    const int lower = node & 1;
    return (lower << 2) | ((node >> 2 ^ upper) << 1) | ((node >> 1 & 1) ^ lower);
}

TEST(VekG728Trellis, PathsObeyTheParityCheck) {
    std::mt19937 random(4);
    for (int start = 0; start < 8; ++start) {
        int node = start;
        std::vector<int> lower;
        std::vector<int> upper;
        for (int n = 0; n < 40; ++n) {
            upper.push_back(static_cast<int>(random() % 2));
            lower.push_back(node & 1);
            node = nextNode(node, upper.back());
        }
        for (size_t n = 3; n < 40; ++n) {
            EXPECT_EQ((lower[n] + lower[n - 1] + lower[n - 3] + upper[n - 2]) % 2, 0);
        }
    }
}

struct Quantised {
    uint8_t code[5] = {};
    Samples window = Samples(5);
    Samples residual = Samples(5);
    int node = 0;
};

// The excitation that a decoder makes of the codes; the node that it reaches.
Samples decoded(const uint8_t* code, int& node, int gain) {
    Samples e;
    for (int k = 0; k < 5; ++k) {
        const int upper = code[k] >> 4;
        const int subset = 2 * upper + (node & 1);
        e.push_back(static_cast<int16_t>((level(4 * (code[k] & 15) + subset) * gain + 4096) >> 13));
        node = nextNode(node, upper);
    }
    return e;
}

TEST(VekG728Trellis, WithoutAFilterTheBestOfAllPathsIsFound) {
    std::mt19937 random(5);
    std::normal_distribution<double> normal(0, 1);
    const Samples lpc(50);
    const int gain = 8 * 60;
    const int32_t inverse = (1 << 30) / 60;
    for (int round = 0; round < 400; ++round) {
        Samples x(5);
        for (int16_t& v : x) {
            v = static_cast<int16_t>(std::lround(240 * normal(random)));
        }
        Quantised q;
        q.window = noise(random, 5, -50, 50);
        q.residual = noise(random, 5, -50, 50);
        q.node = round % 8;
        const Quantised in = q;
        ASSERT_EQ(vekStsNoErr, veksCodebookSearchTCQ_G728_16s8u(x.data(), lpc.data(), q.code, q.window.data(),
                                                                q.residual.data(), &q.node, inverse, gain));
        int node = in.node;
        const Samples e = decoded(q.code, node, gain);
        ASSERT_EQ(node, q.node);
        ASSERT_EQ(e, q.residual);
        int64_t got = 0;
        for (size_t k = 0; k < 5; ++k) {
            const int64_t d = x[k] - in.window[k] - in.residual[k] - e[k];
            got += d * d;
            ASSERT_EQ(q.window[k], in.window[k] + e[k]);
        }
        int64_t best = INT64_MAX;
        for (int path = 0; path < 32; ++path) {
            int at = in.node;
            int64_t error = 0;
            for (int k = 0; k < 5; ++k) {
                const int upper = path >> k & 1;
                const int subset = 2 * upper + (at & 1);
                int64_t nearest = INT64_MAX;
                for (int i = subset; i < 64; i += 4) {
                    const auto s = static_cast<size_t>(k);
                    const int64_t d = x[s] - in.window[s] - in.residual[s] - ((level(i) * gain + 4096) >> 13);
                    nearest = std::min(nearest, d * d);
                }
                error += nearest;
                at = nextNode(at, upper);
            }
            best = std::min(best, error);
        }
        // A sample between two members may take the farther one, as the inverse gain is rounded.
        ASSERT_LE(got, best + best / 20 + 8) << round;
    }
}

TEST(VekG728Trellis, CodesASignalThroughItsFilterAt28Decibels) {
    std::mt19937 random(6);
    std::normal_distribution<double> normal(0, 1);
    const Samples lpc = predictor(random);
    const int gain = 8 * 50;
    Reals past; // of quantised speech
    Reals want;
    Reals got;
    Reals source; // of the speech itself
    int node = 0;
    for (int v = 0; v < 400; ++v) {
        Samples x(5);
        for (int16_t& s : x) {
            double y = 180 * normal(random);
            for (size_t i = 1; i <= 50 && i <= source.size(); ++i) {
                y -= lpc[i - 1] / 16384.0 * source[source.size() - i];
            }
            source.push_back(y);
            s = static_cast<int16_t>(std::lround(std::min(std::max(y, -32768.0), 32767.0)));
        }
        Reals response = past;
        Quantised q;
        for (size_t k = 0; k < 5; ++k) {
            double y = 0;
            for (size_t i = 1; i <= 50 && i <= response.size(); ++i) {
                y -= lpc[i - 1] / 16384.0 * response[response.size() - i];
            }
            response.push_back(y);
            q.window[k] = static_cast<int16_t>(std::lround(y));
        }
        const Samples zeroInput = q.window;
        const int before = node;
        ASSERT_EQ(vekStsNoErr, veksCodebookSearchTCQ_G728_16s8u(x.data(), lpc.data(), q.code, q.window.data(),
                                                                q.residual.data(), &node, (1 << 30) / 50, gain));
        int reached = before;
        const Samples e = decoded(q.code, reached, gain);
        ASSERT_EQ(reached, node);
        ASSERT_EQ(e, q.residual);
        Reals own;
        for (size_t k = 0; k < 5; ++k) {
            double y = e[k];
            for (size_t i = 1; i <= k; ++i) {
                y -= lpc[i - 1] / 16384.0 * own[k - i];
            }
            own.push_back(y);
            ASSERT_NEAR(q.window[k], zeroInput[k] + y, 3);
            past.push_back(q.window[k]);
            want.push_back(x[k]);
            got.push_back(q.window[k]);
        }
    }
    EXPECT_GT(snr(want, got), 28);
}

TEST(VekG728Trellis, SaturatesAtExtremes) {
    const Samples lpc(50, -32768);
    for (const int16_t x : {32767, -32768}) {
        const Samples in(5, x);
        Quantised q;
        q.window.assign(5, static_cast<int16_t>(-1 - x));
        q.residual.assign(5, static_cast<int16_t>(-1 - x));
        ASSERT_EQ(vekStsNoErr, veksCodebookSearchTCQ_G728_16s8u(in.data(), lpc.data(), q.code, q.window.data(),
                                                                q.residual.data(), &q.node, INT32_MAX, 32767));
        EXPECT_EQ(q.residual[0], x);
        for (const uint8_t code : q.code) {
            EXPECT_LT(code, 32);
        }
    }
}

TEST(VekG728Trellis, RefusesWhatItCannotTake) {
    const Samples x(50);
    Quantised q;
    const auto call = [&](int node, int32_t inverse, int16_t gain) {
        q.node = node;
        return veksCodebookSearchTCQ_G728_16s8u(x.data(), x.data(), q.code, q.window.data(), q.residual.data(), &q.node,
                                                inverse, gain);
    };
    EXPECT_EQ(vekStsRangeErr, call(-1, 1, 1));
    EXPECT_EQ(vekStsRangeErr, call(8, 1, 1));
    EXPECT_EQ(vekStsRangeErr, call(0, 0, 1));
    EXPECT_EQ(vekStsRangeErr, call(0, 1, 0));
    EXPECT_EQ(vekStsNoErr, call(7, 1, 1));
}

// Block 82 in double precision, with the low-pass filter as printed.
class RealPitch {
public:
    // The period, and those that come out where correlations or taps are as good as equal.
    std::vector<int> next(const double* d, int before) {
        for (int n = 80; n < 100; ++n) {
            const double y = 0.0357081667 * d[n] - 0.0069956244 * m_in[0] - 0.0069956244 * m_in[1] +
                             0.0357081667 * m_in[2] + 2.34036589 * m_out[0] - 2.01190019 * m_out[1] +
                             0.614109218 * m_out[2];
            m_in = {d[n], m_in[0], m_in[1]};
            m_out = {y, m_out[0], m_out[1]};
            if (n % 4 == 3) {
                m_decimated.push_back(y);
            }
        }
        while (m_decimated.size() < 60) {
            m_decimated.insert(m_decimated.begin(), 0);
        }
        const double* dec = m_decimated.data() + m_decimated.size() - 25;
        std::vector<int> periods;
        for (const int coarse : best(dec, 25, 5, 35)) {
            for (const int lag : best(d, 100, std::max(4 * coarse - 3, 20), std::min(4 * coarse + 3, 140))) {
                bool left = lag <= before + 6;
                for (const int old : best(d, 100, std::max(before - 6, 20), left ? 19 : before + 6)) {
                    const double more = tap(d, old) - 0.4 * tap(d, lag);
                    if (more > -kTie) {
                        periods.push_back(old);
                    }
                    left = left || more < kTie;
                }
                if (left) {
                    periods.push_back(lag);
                }
            }
        }
        return periods;
    }

private:
    static constexpr double kTie = 4e-3;

    static double product(const double* x, int n, int lag) {
        double s = 0;
        for (int k = 0; k < n; ++k) {
            s += x[k] * x[k - lag];
        }
        return s;
    }
    static std::vector<int> best(const double* x, int n, int first, int last) {
        Reals products;
        for (int lag = first; lag <= last; ++lag) {
            products.push_back(product(x, n, lag));
        }
        std::vector<int> found;
        const double energy = product(x, n, 0);
        if (energy == 0 && !products.empty()) {
            return {first}; // of nothing but ties
        }
        // What is compared was rounded.
        const double room = kTie * energy + std::sqrt(energy);
        const auto most = std::max_element(products.begin(), products.end());
        for (int lag = first; lag <= last; ++lag) {
            if (products[static_cast<size_t>(lag - first)] >= *most - room) {
                found.push_back(lag);
            }
        }
        return found;
    }
    static double tap(const double* x, int lag) {
        double energy = 0;
        for (int k = 0; k < 100; ++k) {
            energy += x[k - lag] * x[k - lag];
        }
        return energy == 0 ? 0 : std::min(std::max(product(x, 100, lag) / energy, 0.0), 1.0);
    }

    std::array<double, 3> m_in = {};
    std::array<double, 3> m_out = {};
    Reals m_decimated;
};

// Runs both over a residual, from its 240th sample on.
int disagreements(const Reals& residual, int& frames, std::vector<int>* found = nullptr) {
    Adapter memory(veksPostFilterAdapterGetStateSize_G728);
    EXPECT_EQ(vekStsNoErr, veksPostFilterAdapterInit_G728(memory));
    Samples d(residual.size());
    Reals real(residual.size());
    for (size_t i = 0; i < d.size(); ++i) {
        d[i] = static_cast<int16_t>(std::lround(residual[i]));
        real[i] = d[i];
    }
    RealPitch reference;
    int period = 50;
    int before = 50;
    int unequal = 0;
    for (size_t n = 140; n + 100 <= d.size(); n += 20) {
        EXPECT_EQ(vekStsNoErr, veksPitchPeriodExtraction_G728_16s(d.data() + n, &period, memory));
        const std::vector<int> periods = reference.next(real.data() + n, before);
        unequal += std::count(periods.begin(), periods.end(), period) == 0;
        before = period; // an error counts once
        ++frames;
        if (found != nullptr) {
            found->push_back(period);
        }
    }
    return unequal;
}

TEST(VekG728Pitch, IsThatOfTheBlocksInDoublePrecision) {
    atEveryLevel([] {
        int frames = 0;
        int unequal = 0;
        for (unsigned seed = 1; seed <= 4; ++seed) {
            Reals s = speech(16000, seed);
            for (double& v : s) {
                v *= 4;
            }
            unequal += disagreements(s, frames);
        }
        EXPECT_GT(frames, 3000);
        EXPECT_EQ(0, unequal);
    });
}

TEST(VekG728Pitch, FollowsPulsesOfNearlyEachPeriod) {
    int hits = 0;
    for (int period = 20; period <= 140; ++period) {
        Reals d(2400);
        for (size_t n = 0; n < d.size(); ++n) {
            d[n] = static_cast<int>(n) % period == 0 ? 4000 : static_cast<int>(n) % period == 1 ? 2000 : 0;
        }
        int frames = 0;
        std::vector<int> periods;
        EXPECT_LE(disagreements(d, frames, &periods), 1) << period;
        // A multiple is possible where nothing is known of a period before, and the 25 samples of a decimated window
        // can miss the pulses of a long one.
        hits += periods.back() % period == 0;
    }
    EXPECT_GE(hits, 110);
}

TEST(VekG728Pitch, AKnownPeriodIsNotLeftForItsMultiple) {
    // Every second pulse is a little larger, so that twice the period correlates best.
    Samples d(400);
    for (size_t n = 0; n < d.size(); ++n) {
        const auto place = n % 40;
        d[n] = static_cast<int16_t>(n % 80 == 0 ? 4000 : place == 0 ? 3000 : 0);
    }
    for (const int before : {40, 46, 34, 60}) {
        Adapter memory(veksPostFilterAdapterGetStateSize_G728);
        ASSERT_EQ(vekStsNoErr, veksPostFilterAdapterInit_G728(memory));
        int period = before;
        for (size_t n = 140; n <= 300; n += 20) {
            period = before;
            ASSERT_EQ(vekStsNoErr, veksPitchPeriodExtraction_G728_16s(d.data() + n, &period, memory));
        }
        EXPECT_EQ(period, before == 60 ? 80 : 40) << before;
    }
}

TEST(VekG728Pitch, SilenceAndLoudNoiseStayInRange) {
    std::mt19937 random(7);
    Samples d(800);
    const Samples loud = noise(random, 400, -32768, 32767);
    std::copy(loud.begin(), loud.end(), d.begin() + 300);
    Adapter memory(veksPostFilterAdapterGetStateSize_G728);
    ASSERT_EQ(vekStsNoErr, veksPostFilterAdapterInit_G728(memory));
    int period = 140;
    for (size_t n = 140; n <= 700; n += 20) {
        ASSERT_EQ(vekStsNoErr, veksPitchPeriodExtraction_G728_16s(d.data() + n, &period, memory));
        ASSERT_TRUE(period >= 20 && period <= 140);
        if (n == 140) {
            EXPECT_EQ(period, 20); // the first of equal lags
        }
    }
    for (int before : {19, 141, 0, -1}) {
        EXPECT_EQ(vekStsRangeErr, veksPitchPeriodExtraction_G728_16s(d.data() + 140, &before, memory));
    }
    Adapter fresh(veksPostFilterAdapterGetStateSize_G728);
    EXPECT_EQ(vekStsStateErr, veksPitchPeriodExtraction_G728_16s(d.data() + 140, &period, fresh));
}

} // namespace
