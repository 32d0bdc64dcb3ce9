// The open-loop search of Annex A over three ranges of delays, for sums in fixed and in floating point.
#pragma once

#include <cstdlib>

#include "sc/g729/sizes.h"

namespace vek::g729 {

// Samples of even, and of odd, index before the frame.
constexpr int kHalfHistory = (kLongestDelay + 1) / 2;

/// A frame's samples of even and of odd index, with the history before them: x[2k] and x[2k+1], k = -72..39.
template <class T>
struct Phases {
    T even[kHalfHistory + kHalfFrame];
    T odd[kHalfHistory + kHalfFrame];

    explicit Phases(const T* x) {
        even[0] = 0; // x[-144] is not there, and no delay reaches it
        odd[0] = x[-kLongestDelay];
        for (int k = 1; k < kHalfHistory + kHalfFrame; ++k) {
            even[k] = x[2 * (k - kHalfHistory)];
            odd[k] = x[2 * (k - kHalfHistory) + 1];
        }
    }

    const T* now() const { return even + kHalfHistory; }
    const T* past(int lag) const { return (lag % 2 == 0 ? even : odd) + kHalfHistory - (lag + 1) / 2; }
};

/// The delay of the largest of three peaks; a peak about twice or three times as far as a shorter one first gives that
/// a share of itself (clause A.3.4). `search` finds the peak of a range, takes a delay where it is better, and
/// normalises a peak; the last two add a quarter and a fifth of a peak's value to that of another.
template <class Search, class AddQuarter, class AddFifth>
int bestOfRanges(const Search& search, AddQuarter addQuarter, AddFifth addFifth) {
    auto first = search.peak(20, 40, 1);
    auto second = search.peak(40, 80, 1);
    auto third = search.peak(80, kLongestDelay, 2);
    const int even = third.lag;
    if (even > 80) {
        search.take(third, even - 1);
    }
    search.take(third, even + 1);
    for (auto* peak : {&first, &second, &third}) {
        search.normalise(*peak);
    }
    const auto near = [](int a, int b, int distance) { return std::abs(a - b) < distance; };
    if (near(2 * second.lag, third.lag, 5)) {
        addQuarter(second, third);
    }
    if (near(3 * second.lag, third.lag, 7)) {
        addQuarter(second, third);
    }
    if (near(2 * first.lag, second.lag, 5)) {
        addFifth(first, second);
    }
    if (near(3 * first.lag, second.lag, 7)) {
        addFifth(first, second);
    }
    if (first.value < second.value) {
        first = second;
    }
    return first.value < third.value ? third.lag : first.lag;
}

} // namespace vek::g729
