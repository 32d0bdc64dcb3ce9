// The search for four signed pulses on the tracks of G.729: one for all forms of the matrix; sums of integers are
// exact. The eight positions of a track are compared with the best so far together, and gone through only where one is
// better. Their loops are told not to be written out: that would come before vectors are made of them, and instead of
// it.
#include "sc/kernels/fourpulses.h"

#include <cstddef>

namespace vek {
namespace {

constexpr int kSub = 40;
constexpr int kTracks = 5;
constexpr int kPositions = 8;
constexpr int kPair = kPositions * kPositions;

// Where the pairs of two tracks begin in the matrix; the tracks 3 and 4 never meet.
constexpr int pairAt(int t, int u) {
    constexpr int before[] = {0, 4, 7};
    return kSub + kPair * (before[t] + u - t - 1);
}
constexpr int kElements = pairAt(2, 4) + kPair;
static_assert(pairAt(0, 1) == 40 && pairAt(0, 4) == 232 && pairAt(1, 2) == 296 && pairAt(2, 4) == 552);

template <class A, class B>
constexpr bool kSame = false;
template <class A>
constexpr bool kSame<A, A> = true;
template <bool First, class A, class B>
struct Either {
    using Type = A;
};
template <class A, class B>
struct Either<false, A, B> {
    using Type = B;
};

// v, or -v saturated: flip is 0 or -1.
template <class Element>
VEK_INLINE Element flipped(Element v, Element flip) {
    if constexpr (kSame<Element, float>) {
        return flip < 0 ? -v : v;
    } else {
        constexpr Element least = kSame<Element, int16_t> ? INT16_MIN : static_cast<Element>(INT32_MIN);
        const auto bound = static_cast<Element>(least - flip);
        const Element kept = v > bound ? v : bound;
        return static_cast<Element>((kept ^ flip) - flip);
    }
}

struct Choice : FourPulses {
    int track(int n) const { return n < 3 ? n : last; }
};

// The ratio of squared correlation and energy that was best so far.
struct Best {
    double square = -1;
    double energy = 1;

    bool take(double c, double e) { return takeSquare(c * c, e); }
    bool takeSquare(double s, double e) {
        if (!(s * energy > square * e)) {
            return false;
        }
        square = s;
        energy = e;
        return true;
    }
    // Whether any of eight would be taken.
    VEK_INLINE bool below(const double* squares, const double* energies) const {
        int64_t any = 0;
#pragma GCC unroll 1
        for (int k = 0; k < kPositions; ++k) {
            any |= squares[k] * energy > square * energies[k] ? -1 : 0;
        }
        return any != 0;
    }
};

template <class Corr, class Element>
class Search {
public:
    // What the matrix is read as: 16 bits become 32, which vectors turn into doubles at one step. Those hold sums of 36
    // bits exactly, and are what is compared.
    using Held = typename Either<kSame<Element, int16_t>, int32_t, Element>::Type;
    using Sum = typename Either<kSame<Element, float>, float, double>::Type;
    using Total = typename Either<kSame<Corr, float>, float, int32_t>::Type;

    // The magnitudes of the correlations, their signs multiplied into the matrix.
    Search(const Corr* d, Element* matrix) {
        Element flips[kTracks][kPositions];
        for (int t = 0; t < kTracks; ++t) {
            for (int k = 0; k < kPositions; ++k) {
                const Corr v = d[kTracks * k + t];
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
        if constexpr (kSame<Element, Held>) {
            m_matrix = matrix;
        } else {
            for (int n = 0; n < kElements; ++n) {
                m_wide[n] = matrix[n];
            }
            m_matrix = m_wide;
        }
    }

    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    Choice nested(int& entries) const;
    Choice depthFirst() const;
    // Global pulse replacement: as long as another position of a single pulse is better, the best such exchange is
    // made.
    Choice replaced(Choice choice) const;
    // Squared correlation and energy of a choice.
    Best merit(const Choice& choice) const;

private:
    Sum energy(int t, int k) const { return m_matrix[kPositions * t + k]; }
    Sum pair(int t, int k, int u, int l) const {
        return t < u ? m_matrix[pairAt(t, u) + kPositions * k + l] : m_matrix[pairAt(u, t) + kPositions * l + k];
    }

    // The correlations of a pulse with all positions of another track.
    struct Row {
        const Held* begin;
        int step;

        Held operator[](int l) const { return begin[step * l]; }
    };
    Row row(const Choice& choice, int n, int u) const { return row(choice.track(n), choice.at[n], u); }
    Row row(int t, int k, int u) const {
        return t < u ? Row{m_matrix + pairAt(t, u) + kPositions * k, 1} : Row{m_matrix + pairAt(u, t) + k, kPositions};
    }

    Total m_d[kTracks][kPositions];
    const Held* m_matrix;
    Held m_wide[kSame<Element, Held> ? 1 : kElements];
};

template <class Corr, class Element>
Choice Search<Corr, Element>::nested(int& entries) const {
    Total most = 0;
    Total mean = 0;
    for (int t = 0; t < 3; ++t) {
        Total largest = m_d[t][0];
        for (const Total v : m_d[t]) {
            largest = v > largest ? v : largest;
            mean += v;
        }
        most += largest;
    }
    Total threshold;
    if constexpr (kSame<Corr, float>) {
        mean /= kPositions;
        threshold = mean + 0.4F * (most - mean);
    } else {
        mean >>= 3;
        threshold = mean + static_cast<Total>((int64_t{most - mean} * 13107) >> 15);
    }
    Choice choice{{{}, 3}};
    Best best;
    for (int i = 0; i < kPositions; ++i) {
        for (int j = 0; j < kPositions; ++j) {
            const Total c2 = m_d[0][i] + m_d[1][j];
            const Sum e2 = energy(0, i) + energy(1, j) + 2 * pair(0, i, 1, j);
            // The positions where the last loop is entered, as bits.
            uint32_t entered = 0;
            for (int k = 0; k < kPositions; ++k) {
                entered |= c2 + m_d[2][k] <= threshold ? 0 : 1U << k;
            }
            if (entered == 0) {
                continue;
            }
            Sum last[2][kPositions];
            for (int u = 3; u < kTracks; ++u) {
                const Row first = row(0, i, u);
                const Row second = row(1, j, u);
                for (int l = 0; l < kPositions; ++l) {
                    last[u - 3][l] = energy(u, l) + 2 * (static_cast<Sum>(first.begin[l]) + second.begin[l]);
                }
            }
            for (; entered != 0; entered &= entered - 1) {
                const int k = __builtin_ctz(entered);
                const Total c3 = c2 + m_d[2][k];
                const Sum e3 = e2 + energy(2, k) + 2 * (pair(0, i, 2, k) + pair(1, j, 2, k));
                for (int u = 3; u < kTracks; ++u) {
                    const Held* row = m_matrix + pairAt(2, u) + kPositions * k;
                    double squares[kPositions];
                    double energies[kPositions];
#pragma GCC unroll 1
                    for (int l = 0; l < kPositions; ++l) {
                        const auto sum = static_cast<double>(c3 + m_d[u][l]);
                        squares[l] = sum * sum;
                        energies[l] = static_cast<double>(e3 + last[u - 3][l] + 2 * static_cast<Sum>(row[l]));
                    }
                    if (!best.below(squares, energies)) {
                        continue;
                    }
                    for (int l = 0; l < kPositions; ++l) {
                        if (best.takeSquare(squares[l], energies[l])) {
                            choice = {{{i, j, k, l}, u}};
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
    Choice choice{{{}, 3}};
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
                fourth[l] = energy(t[3], l) + 2 * (static_cast<Sum>(fourthA[l]) + fourthB[l]);
            }
            const Row thirdA = row(t[0], a, t[2]);
            const Row thirdB = row(t[1], b, t[2]);
            Best four;
            int c = 0;
            int d = 0;
            for (int k = 0; k < kPositions; ++k) {
                const Total c3 = c2 + m_d[t[2]][k];
                const Sum e3 = e2 + energy(t[2], k) + 2 * (static_cast<Sum>(thirdA[k]) + thirdB[k]);
                const Held* row = m_matrix + pairAt(t[2], t[3]) + kPositions * k;
                double squares[kPositions];
                double energies[kPositions];
#pragma GCC unroll 1
                for (int l = 0; l < kPositions; ++l) {
                    const auto sum = static_cast<double>(c3 + m_d[t[3]][l]);
                    squares[l] = sum * sum;
                    energies[l] = static_cast<double>(e3 + fourth[l] + 2 * static_cast<Sum>(row[l]));
                }
                if (!four.below(squares, energies)) {
                    continue;
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
                    choice.at[t[n] < 3 ? t[n] : 3] = at[n];
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
#pragma GCC unroll 1
                for (int k = 0; k < kPositions; ++k) {
                    const auto sum = static_cast<double>(stay + m_d[u][k]);
                    squares[k] = sum * sum;
                    energies[k] =
                        static_cast<double>(stayEnergy + energy(u, k) + 2 * (static_cast<Sum>(a[k]) + b[k] + c[k]));
                }
                if (!best.below(squares, energies)) {
                    continue;
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

// What merit the choices have decides between two.
FourPulses replaced(const int16_t* d, int16_t* matrix, const FourPulses& other) {
    const Search<int16_t, int16_t> search(d, matrix);
    const Choice fromOther = search.replaced({other});
    const Choice fromDepth = search.replaced(search.depthFirst());
    const Best one = search.merit(fromDepth);
    const Best two = search.merit(fromOther);
    return two.square * one.energy > one.square * two.energy ? fromOther : fromDepth;
}

template <class Corr, class Element>
FourPulses nested(const Corr* d, Element* matrix, int* entries) {
    return Search<Corr, Element>(d, matrix).nested(*entries);
}

template <class Corr, class Element>
FourPulses depthFirst(const Corr* d, Element* matrix) {
    return Search<Corr, Element>(d, matrix).depthFirst();
}

int pairOfCodes(const float* firstD, const float* firstEnergy, const float* secondD, const float* secondEnergy,
                const float* cross) {
    // The same in doubles, which all that is compared stands in.
    double d[kSecondCodes];
    double energy[kSecondCodes];
    for (int b = 0; b < kSecondCodes; ++b) {
        d[b] = static_cast<double>(secondD[b]);
        energy[b] = static_cast<double>(secondEnergy[b]);
    }
    Best best;
    int code = 0;
    for (int a = 0; a < kFirstCodes; ++a) {
        const auto c1 = static_cast<double>(firstD[a]);
        const auto e1 = static_cast<double>(firstEnergy[a]);
        for (int b = 0; b < kSecondCodes; b += kPositions, cross += kPositions) {
            double squares[kPositions];
            double energies[kPositions];
#pragma GCC unroll 1
            for (int k = 0; k < kPositions; ++k) {
                const double c = c1 + d[b + k];
                squares[k] = c * c;
                energies[k] = e1 + energy[b + k] + 2 * static_cast<double>(cross[k]);
            }
            if (!best.below(squares, energies)) {
                continue;
            }
            for (int k = 0; k < kPositions; ++k) {
                if (best.takeSquare(squares[k], energies[k])) {
                    code = a + kFirstCodes * (b + k);
                }
            }
        }
    }
    return code;
}

} // namespace

VEK_KERNEL_TABLE(FourPulseKernels, fourPulseKernels) = {
    {nested<int16_t, int16_t>, depthFirst<int16_t, int16_t>},
    {nested<int16_t, int32_t>, depthFirst<int16_t, int32_t>},
    {nested<float, float>, depthFirst<float, float>},
    replaced,
    pairOfCodes,
};

} // namespace vek
