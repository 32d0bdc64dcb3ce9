// Makes the words of one to six pulses: halves of a track are told apart, until pairs are left whose order tells a
// sign.
#include "sc/amrwb/pulsewords.h"

namespace vek::amrwb {

namespace {

constexpr int kNegative = kTrackPositions;

uint32_t lowest(int v, int bits) {
    return static_cast<uint32_t>(v) & ((1U << bits) - 1);
}

// Functions of n take pulses on 2^n positions.
uint32_t one(int p, int n) {
    return lowest(p, n) | ((p & kNegative) != 0 ? 1U << n : 0);
}

uint32_t two(int p, int q, int n) {
    const uint32_t a = lowest(p, n);
    const uint32_t b = lowest(q, n);
    const bool same = ((p ^ q) & kNegative) == 0;
    // Of equal signs the lower position comes first, of unequal ones the higher, whose sign is told.
    const bool keep = same ? a <= b : a > b;
    const int leader = keep ? p : q;
    const uint32_t sign = (leader & kNegative) != 0 ? 1U << (2 * n) : 0;
    return sign + (keep ? (a << n) + b : (b << n) + a);
}

// Two pulses in one half, and what `rest` makes of the others.
template <class Rest>
uint32_t pairInHalf(const int* p, int n, Rest rest) {
    const int half = 1 << (n - 1);
    const int a = ((p[0] ^ p[1]) & half) != 0 && ((p[0] ^ p[2]) & half) != 0 ? 1 : 0;
    const int b = a == 1 || ((p[0] ^ p[1]) & half) != 0 ? 2 : 1;
    const int left = 3 - a - b;
    return two(p[a], p[b], n - 1) + (static_cast<uint32_t>(p[a] & half) << n) + (rest(p[left]) << (2 * n));
}

uint32_t three(const int* p, int n) {
    return pairInHalf(p, n, [n](int left) { return one(left, n); });
}

uint32_t fourUneven(const int* p, int n) {
    return pairInHalf(p, n, [p, n](int left) { return two(left, p[3], n); });
}

// Pulses sorted by the half they are in; those of the lower half first, or of the upper.
struct Halves {
    int lower[kMostOnTrack];
    int upper[kMostOnTrack];
    int count = 0;

    Halves(const int* p, int pulses, int n) {
        int above = 0;
        for (int i = 0; i < pulses; ++i) {
            if ((p[i] & (1 << (n - 1))) == 0) {
                lower[count++] = p[i];
            } else {
                upper[above++] = p[i];
            }
        }
    }
};

uint32_t four(const int* p, int n) {
    const int m = n - 1;
    const Halves h(p, 4, n);
    uint32_t word = 0;
    switch (h.count) {
    case 0:
        word = (1U << (4 * n - 3)) + fourUneven(h.upper, m);
        break;
    case 1:
        word = (one(h.lower[0], m) << (3 * m + 1)) + three(h.upper, m);
        break;
    case 2:
        word = (two(h.lower[0], h.lower[1], m) << (2 * m + 1)) + two(h.upper[0], h.upper[1], m);
        break;
    case 3:
        word = (three(h.lower, m) << n) + one(h.upper[0], m);
        break;
    default:
        word = fourUneven(h.lower, m);
        break;
    }
    return word + (static_cast<uint32_t>(h.count & 3) << (4 * n - 2));
}

uint32_t five(const int* p, int n) {
    const Halves h(p, 5, n);
    const bool upper = h.count < 3;
    const int* most = upper ? h.upper : h.lower;
    int left[2] = {};
    const int inMost = upper ? 5 - h.count : h.count;
    int k = 0;
    for (int i = 3; i < inMost; ++i) {
        left[k++] = most[i];
    }
    for (int i = 0; i < 5 - inMost; ++i) {
        left[k++] = upper ? h.lower[i] : h.upper[i];
    }
    return (upper ? 1U << (5 * n - 1) : 0) + (three(most, n - 1) << (2 * n + 1)) + two(left[0], left[1], n);
}

uint32_t six(const int* p, int n) {
    const int m = n - 1;
    const Halves h(p, 6, n);
    const bool upper = h.count < 3;
    const int* most = upper ? h.upper : h.lower;
    const int* least = upper ? h.lower : h.upper;
    const int fewer = upper ? h.count : 6 - h.count;
    uint32_t word = upper ? 1U << (6 * n - 5) : 0;
    switch (fewer) {
    case 0:
        word += (five(most, m) << n) + one(most[5], m);
        break;
    case 1:
        word += (five(most, m) << n) + one(least[0], m);
        break;
    case 2:
        word += (four(most, m) << (2 * m + 1)) + two(least[0], least[1], m);
        break;
    default:
        word = (three(h.lower, m) << (3 * m + 1)) + three(h.upper, m);
        break;
    }
    return word + (static_cast<uint32_t>(fewer) << (6 * n - 4));
}

} // namespace

uint32_t encodeTrack(const int* pulses, int count) {
    constexpr int n = 4;
    switch (count) {
    case 1:
        return one(pulses[0], n);
    case 2:
        return two(pulses[0], pulses[1], n);
    case 3:
        return three(pulses, n);
    case 4:
        return four(pulses, n);
    case 5:
        return five(pulses, n);
    default:
        return six(pulses, n);
    }
}

} // namespace vek::amrwb
