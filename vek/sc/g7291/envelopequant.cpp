// Quantiser of both envelopes: the mean of the time values, and split codebooks of what it leaves.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g7291/envelope.h"
#include "veksc_g7291bwe.h"

using namespace vek::g7291;

namespace {

constexpr int kMeanStep = kEnvelopeOne / 2;
constexpr int kMeanLevels = 32;
constexpr int kTimePart = kSegments / 2;
constexpr int kBandPart = kBands / 3;

// Levels of the quantisers of least error of a normal variable of variance 1 (J. Max, 1960).
constexpr double kLevels2[] = {-0.7979, 0.7979};
constexpr double kLevels4[] = {-1.510, -0.4528, 0.4528, 1.510};
constexpr double kLevels8[] = {-2.152, -1.344, -0.7560, -0.2451, 0.2451, 0.7560, 1.344, 2.152};

template <size_t Rows, size_t Columns>
using Book = std::array<std::array<int16_t, Columns>, Rows>;

// A row for each of the level's combinations, the first coefficient's uppermost: their sum of the first three vectors
// of the orthonormal cosine transform, each with its deviation, and the mean. Q10.
template <size_t Columns, size_t A, size_t B, size_t C, class Mean>
Book<A * B * C, Columns> grid(const double (&a)[A], const double (&b)[B], const double (&c)[C],
                              const double (&deviation)[3], Mean mean) {
    Book<A * B * C, Columns> book{};
    for (size_t row = 0; row < book.size(); ++row) {
        const double level[] = {a[row / (B * C)], b[row / C % B], c[row % C]};
        for (size_t n = 0; n < Columns; ++n) {
            double value = mean(n);
            for (size_t k = 0; k < 3; ++k) {
                const double angle = std::numbers::pi * static_cast<double>(k * (2 * n + 1)) / (2 * Columns);
                value += level[k] * deviation[k] * std::sqrt((k == 0 ? 1.0 : 2.0) / Columns) * std::cos(angle);
            }
            book[row][n] = static_cast<int16_t>(std::lround(kEnvelopeOne * value));
        }
    }
    return book;
}

constexpr double kTimeDeviation[] = {2.75, 2.0, 1.25};
constexpr double kBandDeviation[] = {2.0, 1.0, 0.625};

const auto g_time = grid<kTimePart>(kLevels8, kLevels4, kLevels4, kTimeDeviation, [](size_t) { return 0.0; });

// White noise has frequency values 1.625 above its time values; the spectrum of the band falls.
template <size_t First>
double bandMean(size_t n) {
    return 1.625 - 0.125 * static_cast<double>(First + n);
}
const auto g_low = grid<kBandPart>(kLevels4, kLevels4, kLevels2, kBandDeviation, bandMean<0>);
const auto g_middle = grid<kBandPart>(kLevels4, kLevels4, kLevels2, kBandDeviation, bandMean<kBandPart>);
const auto g_high = grid<kBandPart>(kLevels4, kLevels2, kLevels2, kBandDeviation, bandMean<2 * kBandPart>);

// Replaces values by the mean and the nearest row to what it leaves; tells the row.
template <size_t Rows, size_t Columns>
int16_t quantise(const Book<Rows, Columns>& book, int16_t mean, int16_t* values) {
    std::array<int16_t, Columns> target;
    for (size_t n = 0; n < Columns; ++n) {
        target[n] = sub(values[n], mean);
    }
    int64_t least = INT64_MAX;
    size_t nearest = 0;
    for (size_t row = 0; row < Rows; ++row) {
        int64_t error = 0;
        for (size_t n = 0; n < Columns; ++n) {
            const int64_t d = target[n] - book[row][n];
            error += d * d;
        }
        if (error < least) {
            least = error;
            nearest = row;
        }
    }
    for (size_t n = 0; n < Columns; ++n) {
        values[n] = static_cast<int16_t>(mean + book[nearest][n]);
    }
    return static_cast<int16_t>(nearest);
}

} // namespace

VekStatus veksQuantParam_G7291_16s(Vek16s* pSrcDst, Vek16s* pCdbkIndices) {
    if (anyNull(pSrcDst, pCdbkIndices)) {
        return vekStsNullPtrErr;
    }
    int sum = 0;
    for (int i = 0; i < kSegments; ++i) {
        sum += pSrcDst[i];
    }
    constexpr int step = kSegments * kMeanStep;
    const int index = std::clamp(sum + step / 2, 0, step * kMeanLevels - 1) / step;
    const auto mean = static_cast<Vek16s>(index * kMeanStep);
    Vek16s* const bands = pSrcDst + kSegments;
    pCdbkIndices[0] = static_cast<Vek16s>(index);
    pCdbkIndices[1] = quantise(g_time, mean, pSrcDst);
    pCdbkIndices[2] = quantise(g_time, mean, pSrcDst + kTimePart);
    pCdbkIndices[3] = quantise(g_low, mean, bands);
    pCdbkIndices[4] = quantise(g_middle, mean, bands + kBandPart);
    pCdbkIndices[5] = quantise(g_high, mean, bands + 2 * kBandPart);
    return vekStsNoErr;
}
