// The search for four signed pulses on the tracks of G.729: nested loops with a threshold, depth first as in Annex A,
// and the replacement of single pulses. One search for all forms of the matrix; sums of integers are exact.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

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

// v, or -v saturated: flip is 0 or -1.
template <class Element>
Element flipped(Element v, Element flip) {
    if constexpr (std::is_same_v<Element, Vek32f>) {
        return flip < 0 ? -v : v;
    } else {
        const Element kept = std::max(v, static_cast<Element>(std::numeric_limits<Element>::min() - flip));
        return static_cast<Element>((kept ^ flip) - flip);
    }
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

    bool take(double c, double e) { return takeSquare(c * c, e); }
    bool takeSquare(double s, double e) {
        if (s * energy <= square * e) {
            return false;
        }
        square = s;
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
        Element flips[kTracks][kPositions];
        for (int t = 0; t < kTracks; ++t) {
            for (int k = 0; k < kPositions; ++k) {
                const Corr v = d[kTracks * k + t];
                m_negative[t][k] = v < 0;
                m_d[t][k] = v < 0 ? -static_cast<Total>(v) : static_cast<Total>(v);
                flips[t][k] = v < 0 ? Element{-1} : Element{0};
            }
        }
        for (int t = 0; t < 3; ++t) {
            for (int u = t + 1; u < kTracks; ++u) {
                Element* pair = matrix + pairAt(t, u);
                for (int k = 0; k < kPositions; ++k, pair += kPositions) {
                    for (int l = 0; l < kPositions; ++l) {
                        const Element flip = flips[u][l] == flips[t][k] ? Element{0} : Element{-1};
                        pair[l] = flipped(pair[l], flip);
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

    // The correlations of a pulse with all positions of another track.
    struct Row {
        const Element* begin;
        int step;

        Element operator[](int l) const { return begin[step * l]; }
    };
    Row row(const Choice& choice, int n, int u) const { return row(choice.track(n), choice.at[n], u); }
    Row row(int t, int k, int u) const {
        return t < u ? Row{m_matrix + pairAt(t, u) + kPositions * k, 1} : Row{m_matrix + pairAt(u, t) + k, kPositions};
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
                const Row row = this->row(t[0], k, t[1]);
                for (int l = 0; l < kPositions; ++l) {
                    const Total c = m_d[t[0]][k] + m_d[t[1]][l];
                    const Sum e = energy(t[0], k) + energy(t[1], l) + 2 * static_cast<Sum>(row[l]);
                    if (two.take(static_cast<double>(c), static_cast<double>(e))) {
                        c2 = c;
                        e2 = e;
                        a = k;
                        b = l;
                    }
                }
            }
            Sum fourth[kPositions];
            const Row fourthA = row(t[0], a, t[3]);
            const Row fourthB = row(t[1], b, t[3]);
            for (int l = 0; l < kPositions; ++l) {
                fourth[l] = energy(t[3], l) + 2 * (Sum{fourthA[l]} + fourthB[l]);
            }
            const Row thirdA = row(t[0], a, t[2]);
            const Row thirdB = row(t[1], b, t[2]);
            Best four;
            int c = 0;
            int d = 0;
            for (int k = 0; k < kPositions; ++k) {
                const Total c3 = c2 + m_d[t[2]][k];
                const Sum e3 = e2 + energy(t[2], k) + 2 * (Sum{thirdA[k]} + thirdB[k]);
                const Element* row = m_matrix + pairAt(t[2], t[3]) + kPositions * k;
                double squares[kPositions];
                double energies[kPositions];
                for (int l = 0; l < kPositions; ++l) {
                    const auto sum = static_cast<double>(c3 + m_d[t[3]][l]);
                    squares[l] = sum * sum;
                    energies[l] = static_cast<double>(e3 + fourth[l] + 2 * static_cast<Sum>(row[l]));
                }
                for (int l = 0; l < kPositions; ++l) {
                    if (four.takeSquare(squares[l], energies[l])) {
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
        // Two times the correlations of each pulse with the other three.
        Sum cross[4] = {};
        Total all = 0;
        Sum allEnergy = 0;
        for (int n = 0; n < 4; ++n) {
            all += m_d[choice.track(n)][choice.at[n]];
            allEnergy += energy(choice.track(n), choice.at[n]);
            for (int m = 0; m < n; ++m) {
                const Sum e = 2 * pair(choice.track(m), choice.at[m], choice.track(n), choice.at[n]);
                cross[m] += e;
                cross[n] += e;
                allEnergy += e;
            }
        }
        for (int n = 0; n < 4; ++n) {
            const Total stay = all - m_d[choice.track(n)][choice.at[n]];
            const Sum stayEnergy = allEnergy - energy(choice.track(n), choice.at[n]) - cross[n];
            for (int u = n; u < (n < 3 ? n + 1 : kTracks); ++u) {
                const Row a = row(choice, n == 0 ? 1 : 0, u);
                const Row b = row(choice, n <= 1 ? 2 : 1, u);
                const Row c = row(choice, n <= 2 ? 3 : 2, u);
                double squares[kPositions];
                double energies[kPositions];
                for (int k = 0; k < kPositions; ++k) {
                    const auto sum = static_cast<double>(stay + m_d[u][k]);
                    squares[k] = sum * sum;
                    energies[k] = static_cast<double>(stayEnergy + energy(u, k) + 2 * (Sum{a[k]} + b[k] + c[k]));
                }
                for (int k = 0; k < kPositions; ++k) {
                    if (best.takeSquare(squares[k], energies[k])) {
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
