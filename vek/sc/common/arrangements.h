// Arrangements of small numbers, up to sixteen of them: how many there are, and their rank, larger numbers first. The
// codebooks of leaders number their points so.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vek {

constexpr size_t kArrangedValues = 32;
// How often each number occurs.
using Counts = std::array<int8_t, kArrangedValues>;

template <class Numbers>
Counts countsOf(const Numbers& numbers) {
    Counts counts{};
    for (const auto e : numbers) {
        ++counts[static_cast<size_t>(e)];
    }
    return counts;
}

constexpr int64_t factorial(int n) {
    int64_t product = 1;
    for (int k = 2; k <= n; ++k) {
        product *= k;
    }
    return product;
}

constexpr auto kFactorials = [] {
    std::array<int64_t, 17> f{};
    for (int n = 0; n < 17; ++n) {
        f[static_cast<size_t>(n)] = factorial(n);
    }
    return f;
}();

// Arrangements of the numbers that are counted, `elements` in all.
inline int64_t arrangements(const Counts& counts, size_t elements) {
    int64_t n = kFactorials[elements];
    for (const int8_t c : counts) {
        n = c > 1 ? n / kFactorials[static_cast<size_t>(c)] : n;
    }
    return n;
}

// Rank of x[0..n-1] among the arrangements of its numbers.
inline int64_t rankOf(const int8_t* x, size_t n, Counts counts) {
    int64_t r = 0;
    for (size_t i = 0; i < n; ++i) {
        for (size_t e = kArrangedValues - 1; e > static_cast<size_t>(x[i]); --e) {
            if (counts[e] > 0) {
                --counts[e];
                r += arrangements(counts, n - i - 1);
                ++counts[e];
            }
        }
        --counts[static_cast<size_t>(x[i])];
    }
    return r;
}

// The arrangement of a rank.
inline void arrangementOf(int64_t rank, Counts counts, int8_t* x, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        for (size_t e = kArrangedValues; e-- > 0;) {
            if (counts[e] == 0) {
                continue;
            }
            --counts[e];
            const int64_t behind = arrangements(counts, n - i - 1);
            if (rank < behind) {
                x[i] = static_cast<int8_t>(e);
                break;
            }
            rank -= behind;
            ++counts[e];
        }
    }
}

} // namespace vek
