// Nearest row of a codebook: the wide forms keep the best of each lane with its row, and settle between
// the lanes at the end.
#include "sc/kernels/vq.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

template <bool sum>
int nearest(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least) {
    uint32_t best = UINT32_MAX;
    int row = 0;
    for (int i = 0; i < n; ++i) {
        uint32_t error = 0;
        for (int j = 0; j < 4; ++j) {
            const int d = fix::sat16(sum ? target[j] + rows[4 * i + j] : target[j] - rows[4 * i + j]);
            const int t = (weight[j] * d) >> 15;
            error += static_cast<uint32_t>(t * t);
        }
        if (error < best) {
            best = error;
            row = i;
        }
    }
    *least = best;
    return row;
}

// errorOf gives the sum of each row.
template <class ErrorOf>
int least(int n, ErrorOf errorOf) {
    int32_t best = INT32_MAX;
    int row = 0;
    for (int k = 0; k < n; ++k) {
        const int32_t error = errorOf(k);
        if (error < best) {
            best = error;
            row = k;
        }
    }
    return row;
}

int nearest10(const int16_t* pairs, int n, const int16_t* target) {
    return least(n, [=](int k) {
        int32_t error = 0;
        for (int j = 0; j < 10; ++j) {
            const int d = target[j] - pairs[(j / 2 * n + k) * 2 + j % 2];
            error += d * d;
        }
        return error;
    });
}

int nearestWeighted(const int16_t* columns, int n, int count, const int32_t* target, const int16_t* rest,
                    const int32_t* weight) {
    return least(n, [=](int k) {
        int32_t error = 0;
        for (int j = 0; j < count; ++j) {
            const int e = (rest[j] * (target[j] - columns[j * n + k])) >> 15;
            error += e * ((e * weight[j]) >> 11);
        }
        return error;
    });
}

int nearest32f(const float* columns, int n, int count, const float* target, const float* weight) {
    return least(n, [=](int k) {
        float error[2] = {};
        for (int j = 0; j < count; ++j) {
            const float d = target[j] - columns[j * n + k];
            error[j % 2] += d * d * weight[j];
        }
        // Floats that are not negative are in the order of their bits.
        return __builtin_bit_cast(int32_t, error[0] + error[1]);
    });
}

void movingAverage10(const int16_t* weight, const int16_t* previous, int32_t* sum) {
    for (int j = 0; j < 10; ++j) {
        sum[j] = 0;
        for (int k = 0; k < 4; ++k) {
            sum[j] += weight[10 * k + j] * previous[10 * k + j];
        }
    }
}

#else

using namespace registers;

// A lane is a row, or two columns of it. The number of rows is no multiple of more.
using Rows = hn::CappedTag<int32_t, 8>;
using Columns = hn::RepartitionToNarrow<Rows>;

void movingAverage10(const int16_t* weight, const int16_t* previous, int32_t* sum) {
    // The second time over six of the same.
    for (const int j : {0, 2}) {
        const auto row = [j](const int16_t* p, int k) { return hn::LoadU(kEightOf16, p + 10 * k + j); };
        auto lower = hn::Zero(kFourOf32);
        auto upper = lower;
        for (int k = 0; k < 4; k += 2) {
            const auto w0 = row(weight, k);
            const auto w1 = row(weight, k + 1);
            const auto p0 = row(previous, k);
            const auto p1 = row(previous, k + 1);
            lower = plusPairs(lower, hn::InterleaveLower(kEightOf16, w0, w1), hn::InterleaveLower(kEightOf16, p0, p1));
            upper = plusPairs(upper, hn::InterleaveUpper(kEightOf16, w0, w1), hn::InterleaveUpper(kEightOf16, p0, p1));
        }
        hn::StoreU(lower, kFourOf32, sum + j);
        hn::StoreU(upper, kFourOf32, sum + j + 4);
    }
}

// errorOf gives the sums of all rows of a register from row k on.
template <class ErrorOf>
VEK_INLINE int leastOfRows(int n, ErrorOf errorOf) {
    LeastOfLanes<Rows> best;
    auto row = hn::Load(Rows(), kCounting);
    for (int k = 0; k < n; k += kLanesOf<Rows>) {
        best.see(errorOf(k), row);
        row = row + hn::Set(Rows(), kLanesOf<Rows>);
    }
    int32_t least = 0;
    return best.settle(&least);
}

int nearest10(const int16_t* pairs, int n, const int16_t* target) {
    hn::Vec<Columns> t[5];
    for (int p = 0; p < 5; ++p) {
        const auto two = static_cast<uint16_t>(target[2 * p]) |
                         static_cast<uint32_t>(static_cast<uint16_t>(target[2 * p + 1])) << 16;
        t[p] = hn::BitCast(Columns(), hn::Set(Rows(), static_cast<int32_t>(two)));
    }
    return leastOfRows(n, [&](int k) {
        auto sum = hn::Zero(Rows());
        for (int p = 0; p < 5; ++p) {
            const auto d = t[p] - hn::LoadU(Columns(), pairs + 2 * (p * n + k));
            sum = plusPairs(sum, d, d);
        }
        return sum;
    });
}

int nearestWeighted(const int16_t* columns, int n, int count, const int32_t* target, const int16_t* rest,
                    const int32_t* weight) {
    const Rows d;
    return leastOfRows(n, [=](int k) {
        auto sum = hn::Zero(d);
        for (int j = 0; j < count; ++j) {
            const auto column = hn::PromoteTo(d, hn::LoadU(hn::Rebind<int16_t, Rows>(), columns + j * n + k));
            const auto e = hn::ShiftRight<15>((hn::Set(d, target[j]) - column) * hn::Set(d, rest[j]));
            sum = sum + e * hn::ShiftRight<11>(e * hn::Set(d, weight[j]));
        }
        return sum;
    });
}

int nearest32f(const float* columns, int n, int count, const float* target, const float* weight) {
    const hn::RebindToFloat<Rows> d;
    return leastOfRows(n, [=](int k) {
        auto even = hn::Zero(d);
        auto odd = even;
        for (int j = 0; j < count; ++j) {
            const auto e = hn::Set(d, target[j]) - hn::LoadU(d, columns + j * n + k);
            const auto sum = even + e * e * hn::Set(d, weight[j]);
            even = odd;
            odd = sum;
        }
        // Floats that are not negative are in the order of their bits.
        return hn::BitCast(Rows(), even + odd);
    });
}

VEK_INLINE hn::Vec<Columns> fourColumns(const int16_t* p) {
    int64_t four;
    __builtin_memcpy(&four, p, sizeof four);
    return hn::BitCast(Columns(), hn::Set(hn::RepartitionToWide<Rows>(), four));
}

// Of each row two sums of two columns.
template <bool sum>
VEK_INLINE hn::Vec<Rows> squares(const int16_t* p, hn::Vec<Columns> target, hn::Vec<Columns> weight) {
    const auto row = hn::LoadU(Columns(), p);
    const auto t = multCut(weight, sum ? hn::SaturatedAdd(target, row) : hn::SaturatedSub(target, row));
    return pairSums(t, t);
}

template <bool sum>
int nearest(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least) {
    using Errors = hn::RebindToUnsigned<Rows>;
    constexpr int lanes = kLanesOf<Rows>;
    const auto r = fourColumns(target);
    const auto w = fourColumns(weight);
    LeastOfLanes<Errors> best;
    // The rows of the one register in the even lanes, those of the other in the odd ones.
    uint32_t places[lanes];
    for (uint32_t k = 0; k < lanes / 2; ++k) {
        places[2 * k] = k;
        places[2 * k + 1] = k + lanes / 2;
    }
    auto row = hn::LoadU(Errors(), places);
    for (int i = 0; i < n; i += lanes) {
        const auto a = squares<sum>(rows + 4 * i, r, w);
        const auto b = squares<sum>(rows + 4 * i + 2 * lanes, r, w);
        const auto e = hn::OddEven(b, a) + hn::Shuffle2301(hn::OddEven(a, b));
        best.see(hn::BitCast(Errors(), e), row);
        row = row + hn::Set(Errors(), lanes);
    }
    return best.settle(least);
}

#endif

} // namespace

VEK_KERNEL_TABLE(VqKernels, vqKernels) = {nearest<false>,  nearest<true>, nearest10,
                                          nearestWeighted, nearest32f,    movingAverage10};

} // namespace vek
