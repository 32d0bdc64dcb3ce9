// Fixed codebook searches of G.729 and its annexes against the same searches in double precision, which find the same
// pulses; of Annex E's in fixed point they may be others that are as good.
#include "pulses_reference.h"

#include <algorithm>

namespace {

using namespace pulseref;

// Magnitudes of the correlations, and products of responses with the signs.
struct Exact {
    double d[40] = {};
    double phi[40][40] = {};

    explicit Exact(const Problem& p) {
        for (int i = 0; i < 40; ++i) {
            d[i] = std::abs(double{1} * p.d[i]);
            for (int j = 0; j < 40; ++j) {
                phi[i][j] = p.phi(i, j) * ((p.d[i] < 0) == (p.d[j] < 0) ? 1 : -1);
            }
        }
    }

    double merit(const std::vector<int>& at) const {
        double c = 0;
        double e = 0;
        for (const int i : at) {
            c += d[i];
            for (const int j : at) {
                e += phi[i][j];
            }
        }
        return c * c / e;
    }

    std::vector<int> code(const Problem& p, const std::vector<int>& at) const {
        std::vector<int> v(40);
        for (const int i : at) {
            v[i] += p.d[i] < 0 ? -1 : 1;
        }
        return v;
    }
};

// 3.8.1: the last loop is entered above a threshold of 0.4 between mean and maximum, so many times.
std::vector<int> nestedInDouble(const Exact& x, int entries) {
    double most = 0;
    double mean = 0;
    for (int t = 0; t < 3; ++t) {
        double largest = 0;
        for (int i = t; i < 40; i += 5) {
            largest = std::max(largest, x.d[i]);
            mean += x.d[i] / 8;
        }
        most += largest;
    }
    std::vector<int> found = {0, 1, 2, 3};
    double best = -1;
    for (int i = 0; i < 40; i += 5) {
        for (int j = 1; j < 40; j += 5) {
            for (int k = 2; k < 40; k += 5) {
                if (entries == 0 || x.d[i] + x.d[j] + x.d[k] <= mean + 0.4 * (most - mean)) {
                    continue;
                }
                --entries;
                for (int l = 3; l < 40; l += l % 5 == 3 ? 1 : 4) {
                    const double merit = x.merit({i, j, k, l});
                    if (merit > best) {
                        best = merit;
                        found = {i, j, k, l};
                    }
                }
            }
        }
    }
    return found;
}

// A.3.8.1: a pulse on one of the two largest correlations of its track with the best on another track, then the best
// pair of the other two; from four pairs of tracks.
std::vector<int> depthFirstInDouble(const Exact& x) {
    std::vector<int> found;
    double best = -1;
    for (int last = 3; last < 5; ++last) {
        for (const auto& tracks : {std::vector<int>{2, last, 0, 1}, std::vector<int>{last, 0, 1, 2}}) {
            std::vector<int> order;
            for (int i = tracks[0]; i < 40; i += 5) {
                order.push_back(i);
            }
            std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return x.d[a] > x.d[b]; });
            std::vector<int> two;
            double bestTwo = -1;
            for (int n = 0; n < 2; ++n) {
                for (int j = tracks[1]; j < 40; j += 5) {
                    const double merit = x.merit({order[static_cast<size_t>(n)], j});
                    if (merit > bestTwo) {
                        bestTwo = merit;
                        two = {order[static_cast<size_t>(n)], j};
                    }
                }
            }
            for (int i = tracks[2]; i < 40; i += 5) {
                for (int j = tracks[3]; j < 40; j += 5) {
                    const double merit = x.merit({two[0], two[1], i, j});
                    if (merit > best) {
                        best = merit;
                        found = {two[0], two[1], i, j};
                    }
                }
            }
        }
    }
    return found;
}

// Calls each form, and the model, of a search of four pulses.
template <class Words16, class Words32, class Real, class Search, class Model>
void expectSearch(unsigned seed, Words16 words16, Words32 words32, Real real, const Search& search,
                  const Model& model) {
    std::mt19937 random(seed);
    for (int round = 0; round < 120; ++round) {
        Problem p(random);
        if (round % 2 == 1) {
            // Correlations much alike: where pulses may stand, a threshold between their mean and maximum decides.
            for (size_t i = 0; i < 40; ++i) {
                const int size = noise(random, 1, 2000, 2600)[0];
                p.d[i] = static_cast<int16_t>(p.d[i] < 0 ? -size : size);
                p.realD[i] = p.d[i];
            }
        }
        const Exact exact(p);
        const std::vector<int> want = exact.code(p, model(exact));
        Samples code(40), wideCode(40), index(2);
        Reals realCode(40);
        ASSERT_EQ(vekStsNoErr, search(real, p.realD.data(), p.real.data(), realCode.data(), index.data()));
        ASSERT_EQ(want, ones(realCode, 1)) << round;
        ASSERT_EQ(vekStsNoErr, search(words16, p.d.data(), p.matrix.data(), code.data(), index.data()));
        ASSERT_EQ(vekStsNoErr, search(words32, p.d.data(), p.wide.data(), wideCode.data(), index.data()));
        ASSERT_EQ(want, ones(code, 8192)) << round;
        ASSERT_EQ(want, ones(wideCode, 8192)) << round;
    }
}

TEST(VekFourPulses, OfTheNestedSearchAreThoseOfDoublePrecision) {
    atEveryLevel([] {
        int16_t times = 0;
        expectSearch(
            7, veksFixedCodebookSearch_G729_16s, veksFixedCodebookSearch_G729_32s16s, veksFixedCodebookSearch_G729_32f,
            [&](auto form, auto... arguments) { return form(arguments..., &times, 0); },
            [](const Exact& x) { return nestedInDouble(x, 105); });
    });
}

TEST(VekFourPulses, OfTheDepthFirstSearchAreThoseOfDoublePrecision) {
    atEveryLevel([] {
        expectSearch(
            8, veksFixedCodebookSearch_G729A_16s, veksFixedCodebookSearch_G729A_32s16s,
            veksFixedCodebookSearch_G729A_32f, [](auto form, auto... arguments) { return form(arguments...); },
            depthFirstInDouble);
    });
}

// The search in double precision: signs by correlation and residual together, the first pulse on their maximum, the
// second on the maximum of each other track in turn, the others in the best pair after pair.
std::vector<int> manyInDouble(const Samples& target, const Samples& residual, const Samples& h, int pulses) {
    double d[40] = {};
    double squares[2] = {1e-9, 1e-9};
    for (int n = 0; n < 40; ++n) {
        for (int i = n; i < 40; ++i) {
            d[n] += double{1} * target[i] * h[i - n];
        }
        squares[0] += d[n] * d[n];
        squares[1] += double{1} * residual[n] * residual[n];
    }
    double weight[40];
    int largest[5] = {0, 1, 2, 3, 4};
    for (int n = 0; n < 40; ++n) {
        weight[n] = d[n] / std::sqrt(squares[0]) + residual[n] / std::sqrt(squares[1]);
        largest[n % 5] = std::abs(weight[n]) > std::abs(weight[largest[n % 5]]) ? n : largest[n % 5];
    }
    double phi[40][40];
    for (int i = 0; i < 40; ++i) {
        for (int j = 0; j < 40; ++j) {
            phi[i][j] = 0;
            for (int n = std::max(i, j); n < 40; ++n) {
                phi[i][j] += double{1} * h[n - i] * h[n - j] * ((weight[i] < 0) == (weight[j] < 0) ? 1 : -1);
            }
        }
    }
    int first = 0;
    for (int t = 1; t < 5; ++t) {
        first = std::abs(weight[largest[t]]) > std::abs(weight[largest[first]]) ? t : first;
    }
    std::vector<int> tracks;
    for (int n = 0; n < pulses; ++n) {
        tracks.push_back((first + n) % 5);
    }
    const auto signedCorrelation = [&](int i) { return weight[i] < 0 ? -d[i] : d[i]; };
    double best = -1;
    std::vector<int> found;
    for (int turn = 0; turn < 4; ++turn) {
        std::vector<int> at = {largest[tracks[0]], largest[tracks[1]]};
        double c = signedCorrelation(at[0]) + signedCorrelation(at[1]);
        double e = phi[at[0]][at[0]] + phi[at[1]][at[1]] + 2 * phi[at[0]][at[1]];
        double merit = 0;
        while (at.size() < tracks.size()) {
            std::vector<double> gained(40);
            for (int i = 0; i < 40; ++i) {
                gained[i] = phi[i][i];
                for (const int p : at) {
                    gained[i] += 2 * phi[i][p];
                }
            }
            int pair[2] = {};
            merit = -1;
            for (int i = tracks[at.size()]; i < 40; i += 5) {
                for (int j = tracks[at.size() + 1]; j < 40; j += 5) {
                    const double sum = c + signedCorrelation(i) + signedCorrelation(j);
                    const double energy = e + gained[i] + gained[j] + 2 * phi[i][j];
                    if (sum * sum / energy > merit) {
                        merit = sum * sum / energy;
                        pair[0] = i;
                        pair[1] = j;
                    }
                }
            }
            c += signedCorrelation(pair[0]) + signedCorrelation(pair[1]);
            e += gained[pair[0]] + gained[pair[1]] + 2 * phi[pair[0]][pair[1]];
            at.insert(at.end(), pair, pair + 2);
        }
        if (merit > best) {
            best = merit;
            found = at;
        }
        std::rotate(tracks.begin() + 1, tracks.begin() + 2, tracks.end());
    }
    std::vector<int> code(40);
    for (const int at : found) {
        code[at] += weight[at] < 0 ? -1 : 1;
    }
    return code;
}

TEST(VekManyPulses, AreThoseOfTheSearchInDoublePrecision) {
    atEveryLevel([] {
        std::mt19937 random(15);
        double least = 1;
        for (int round = 0; round < 60; ++round) {
            ManyPulses p(random);
            for (int mode = 0; mode < 2; ++mode) {
                const std::vector<int> want = manyInDouble(p.target, p.residual, p.h, mode == 0 ? 10 : 12);
                ASSERT_EQ(vekStsNoErr, p.searchReal(mode));
                ASSERT_EQ(want, ones(p.realCode, 1)) << round << " " << mode;
                ASSERT_EQ(vekStsNoErr, p.search(mode));
                least = std::min(least, p.merit(ones(p.code, 8192)) / p.merit(want));
            }
        }
        EXPECT_GE(least, 0.9);
    });
}

} // namespace
