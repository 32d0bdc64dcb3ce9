// The search for four signed pulses on the tracks of G.729: nested loops with a threshold, depth first as in Annex A,
// and the replacement of single pulses. One search for all forms of the matrix; sums of integers are exact.
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek::fourpulses {

constexpr int kSub = 40;
constexpr int kTracks = 5;
constexpr int kPositions = 8;
constexpr int kPair = kPositions * kPositions;

// Where the pairs of two tracks begin in the matrix; the tracks 3 and 4 never meet.
constexpr int pairAt(int t, int u) {
    constexpr int before[] = {0, 4, 7};
    return kSub + kPair * (before[t] + u - t - 1);
}
static_assert(pairAt(0, 1) == 40 && pairAt(0, 4) == 232 && pairAt(1, 2) == 296 && pairAt(2, 4) == 552);

inline int16_t negated(int16_t v) {
    return fix::negate(v);
}
inline int32_t negated(int32_t v) {
    return fix::L_negate(v);
}
inline float negated(float v) {
    return -v;
}

// Positions within tracks, three of the tracks 0 to 2 and one of 3 or 4.
struct Choice {
    int at[4] = {};
    int last = 3;

    int track(int n) const { return n < 3 ? n : last; }
    int position(int n) const { return kTracks * at[n] + track(n); }
};

// The ratio of squared correlation and energy that was best so far.
struct Best {
    double square = -1;
    double energy = 1;

    bool take(double c, double e) {
        if (c * c * energy <= square * e) {
            return false;
        }
        square = c * c;
        energy = e;
        return true;
    }
};

template <class Corr, class Element>
class Search {
public:
    using Sum = std::conditional_t<std::is_same_v<Element, Vek16s>, int32_t,
                                   std::conditional_t<std::is_same_v<Element, Vek32s>, int64_t, float>>;
    using Total = std::conditional_t<std::is_same_v<Corr, Vek32f>, float, int32_t>;

    // The magnitudes of the correlations, their signs multiplied into the matrix.
    Search(const Corr* d, Element* matrix) : m_matrix(matrix) {
        for (int t = 0; t < kTracks; ++t) {
            for (int k = 0; k < kPositions; ++k) {
                const Corr v = d[kTracks * k + t];
                m_negative[t][k] = v < 0;
                m_d[t][k] = v < 0 ? -static_cast<Total>(v) : static_cast<Total>(v);
            }
        }
        for (int t = 0; t < 3; ++t) {
            for (int u = t + 1; u < kTracks; ++u) {
                Element* pair = matrix + pairAt(t, u);
                for (int k = 0; k < kPositions; ++k) {
                    for (int l = 0; l < kPositions; ++l) {
                        Element& e = pair[kPositions * k + l];
                        e = m_negative[t][k] != m_negative[u][l] ? negated(e) : e;
                    }
                }
            }
        }
    }

    Choice nested(int& entries) const;
    Choice depthFirst() const;
    // Global pulse replacement: as long as another position of a single pulse is better, the best such exchange is
    // made.
    Choice replaced(Choice choice) const;
    // Squared correlation and energy of a choice.
    Best merit(const Choice& choice) const;

    template <class Sample>
    void deliver(const Choice& choice, Sample* code, Vek16s* index) const {
        std::fill_n(code, kSub, Sample{0});
        int positions = choice.last - 3;
        int signs = 0;
        for (int n = 3; n >= 0; --n) {
            const bool negative = m_negative[choice.track(n)][choice.at[n]];
            if constexpr (std::is_same_v<Sample, Vek32f>) {
                code[choice.position(n)] = negative ? -1.0F : 1.0F;
            } else {
                code[choice.position(n)] = static_cast<Sample>(negative ? -8192 : 8191);
            }
            positions = n == 3 ? positions + 2 * choice.at[n] : 8 * positions + choice.at[n];
            signs = 2 * signs + (negative ? 0 : 1);
        }
        index[0] = static_cast<Vek16s>(positions);
        index[1] = static_cast<Vek16s>(signs);
    }

private:
    Sum energy(int t, int k) const { return m_matrix[kPositions * t + k]; }
    Sum pair(int t, int k, int u, int l) const {
        return t < u ? m_matrix[pairAt(t, u) + kPositions * k + l] : m_matrix[pairAt(u, t) + kPositions * l + k];
    }

    Total m_d[kTracks][kPositions];
    bool m_negative[kTracks][kPositions];
    const Element* m_matrix;
};

template <class Corr, class Element>
Choice Search<Corr, Element>::nested(int& entries) const {
    Total most = 0;
    Total mean = 0;
    for (int t = 0; t < 3; ++t) {
        most += *std::max_element(m_d[t], m_d[t] + kPositions);
        for (const Total v : m_d[t]) {
            mean += v;
        }
    }
    Total threshold;
    if constexpr (std::is_same_v<Corr, Vek32f>) {
        mean /= kPositions;
        threshold = mean + 0.4F * (most - mean);
    } else {
        mean >>= 3;
        threshold = mean + static_cast<Total>((int64_t{most - mean} * 13107) >> 15);
    }
    Choice choice;
    Best best;
    for (int i = 0; i < kPositions; ++i) {
        for (int j = 0; j < kPositions; ++j) {
            const Total c2 = m_d[0][i] + m_d[1][j];
            const Sum e2 = energy(0, i) + energy(1, j) + 2 * pair(0, i, 1, j);
            Sum last[2][kPositions];
            bool summed = false;
            for (int k = 0; k < kPositions; ++k) {
                const Total c3 = c2 + m_d[2][k];
                if (c3 <= threshold) {
                    continue;
                }
                if (!summed) {
                    summed = true;
                    for (int u = 3; u < kTracks; ++u) {
                        for (int l = 0; l < kPositions; ++l) {
                            last[u - 3][l] = energy(u, l) + 2 * (pair(0, i, u, l) + pair(1, j, u, l));
                        }
                    }
                }
                const Sum e3 = e2 + energy(2, k) + 2 * (pair(0, i, 2, k) + pair(1, j, 2, k));
                for (int u = 3; u < kTracks; ++u) {
                    for (int l = 0; l < kPositions; ++l) {
                        const Sum e = e3 + last[u - 3][l] + 2 * pair(2, k, u, l);
                        if (best.take(static_cast<double>(c3 + m_d[u][l]), static_cast<double>(e))) {
                            choice = {{i, j, k, l}, u};
                        }
                    }
                }
                if (--entries <= 0) {
                    return choice;
                }
            }
        }
    }
    return choice;
}

template <class Corr, class Element>
Choice Search<Corr, Element>::depthFirst() const {
    Choice choice;
    Best best;
    for (int last = 3; last < kTracks; ++last) {
        // The tracks of the pulses in the order of their choice.
        const int orders[2][4] = {{2, last, 0, 1}, {last, 0, 1, 2}};
        for (const int(&t)[4] : orders) {
            Best two;
            Total c2 = 0;
            Sum e2 = 0;
            int a = 0;
            int b = 0;
            int taken = -1;
            for (int round = 0; round < 2; ++round) {
                int k = taken == 0 ? 1 : 0;
                for (int l = k + 1; l < kPositions; ++l) {
                    k = l != taken && m_d[t[0]][l] > m_d[t[0]][k] ? l : k;
                }
                taken = k;
                for (int l = 0; l < kPositions; ++l) {
                    const Total c = m_d[t[0]][k] + m_d[t[1]][l];
                    const Sum e = energy(t[0], k) + energy(t[1], l) + 2 * pair(t[0], k, t[1], l);
                    if (two.take(static_cast<double>(c), static_cast<double>(e))) {
                        c2 = c;
                        e2 = e;
                        a = k;
                        b = l;
                    }
                }
            }
            Sum fourth[kPositions];
            for (int l = 0; l < kPositions; ++l) {
                fourth[l] = energy(t[3], l) + 2 * (pair(t[0], a, t[3], l) + pair(t[1], b, t[3], l));
            }
            Best four;
            int c = 0;
            int d = 0;
            for (int k = 0; k < kPositions; ++k) {
                const Total c3 = c2 + m_d[t[2]][k];
                const Sum e3 = e2 + energy(t[2], k) + 2 * (pair(t[0], a, t[2], k) + pair(t[1], b, t[2], k));
                const Element* row = m_matrix + pairAt(t[2], t[3]) + kPositions * k;
                for (int l = 0; l < kPositions; ++l) {
                    const Sum e = e3 + fourth[l] + 2 * static_cast<Sum>(row[l]);
                    if (four.take(static_cast<double>(c3 + m_d[t[3]][l]), static_cast<double>(e))) {
                        c = k;
                        d = l;
                    }
                }
            }
            if (four.square * best.energy > best.square * four.energy) {
                best = four;
                choice.last = last;
                const int at[4] = {a, b, c, d};
                for (int n = 0; n < 4; ++n) {
                    choice.at[std::min(t[n], 3)] = at[n];
                }
            }
        }
    }
    return choice;
}

template <class Corr, class Element>
Best Search<Corr, Element>::merit(const Choice& choice) const {
    Total c = 0;
    Sum e = 0;
    for (int n = 0; n < 4; ++n) {
        c += m_d[choice.track(n)][choice.at[n]];
        e += energy(choice.track(n), choice.at[n]);
        for (int m = 0; m < n; ++m) {
            e += 2 * pair(choice.track(m), choice.at[m], choice.track(n), choice.at[n]);
        }
    }
    Best best;
    best.take(static_cast<double>(c), static_cast<double>(e));
    return best;
}

template <class Corr, class Element>
Choice Search<Corr, Element>::replaced(Choice choice) const {
    Best best = merit(choice);
    for (bool better = true; better;) {
        better = false;
        Choice next = choice;
        for (int n = 0; n < 4; ++n) {
            // The three pulses that stay.
            Total stay = 0;
            Sum stayEnergy = 0;
            int track[3];
            int at[3];
            int count = 0;
            for (int m = 0; m < 4; ++m) {
                if (m != n) {
                    track[count] = choice.track(m);
                    at[count] = choice.at[m];
                    stay += m_d[track[count]][at[count]];
                    stayEnergy += energy(track[count], at[count]);
                    for (int p = 0; p < count; ++p) {
                        stayEnergy += 2 * pair(track[p], at[p], track[count], at[count]);
                    }
                    ++count;
                }
            }
            for (int u = n; u < (n < 3 ? n + 1 : kTracks); ++u) {
                for (int k = 0; k < kPositions; ++k) {
                    const Sum e =
                        stayEnergy + energy(u, k) +
                        2 * (pair(track[0], at[0], u, k) + pair(track[1], at[1], u, k) + pair(track[2], at[2], u, k));
                    if (best.take(static_cast<double>(stay + m_d[u][k]), static_cast<double>(e))) {
                        next = choice;
                        next.at[n] = k;
                        next.last = n == 3 ? u : choice.last;
                        better = true;
                    }
                }
            }
        }
        choice = next;
    }
    return choice;
}

} // namespace vek::fourpulses
