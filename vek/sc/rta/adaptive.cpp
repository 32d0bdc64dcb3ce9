// Search of the adaptive codebook of the real-time audio codec.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "sc/common/signal_check.h"
#include "sc/kernels/floatdot.h"
#include "sc/rta/response.h"
#include "veksc_rta.h"

namespace {

using namespace vek::rta;

constexpr int kRegions = 4;
constexpr int kSteps[kRegions] = {1, 3, 2, 1}; // a sample
constexpr int kMostSteps = 3;
constexpr int kSide = 8; // taps on each side
constexpr int kMostLag = 256;
constexpr int kLeastSubframe = 4;

// Weights of the samples from whole lag + 8 to whole lag - 7 before a place, for part / steps of a sample more.
struct Interpolation {
    float taps[kMostSteps + 1][kMostSteps][2 * kSide];
};

Interpolation makeInterpolation() {
    constexpr double pi = std::numbers::pi;
    Interpolation table{};
    for (int steps = 2; steps <= kMostSteps; ++steps) {
        for (int part = 1; part < steps; ++part) {
            double w[2 * kSide];
            double sum = 0;
            for (int j = 0; j < 2 * kSide; ++j) {
                const double t = pi * (j - kSide + static_cast<double>(part) / steps);
                w[j] = std::sin(t) / t * (0.5 + 0.5 * std::cos(t / (kSide + 1)));
                sum += w[j];
            }
            for (int j = 0; j < 2 * kSide; ++j) {
                table.taps[steps][part][j] = static_cast<float>(w[j] / sum);
            }
        }
    }
    return table;
}

const Interpolation g_interpolation = makeInterpolation();

struct Lag {
    int whole;
    int part;
    int steps;
    // Where the vector meets itself.
    int reach() const { return part == 0 ? whole : whole - kSide + 1; }
};

// The lags in rising order.
struct LagGrid {
    int bounds[kRegions + 1];

    int count() const { return first(kRegions) + 1; }
    int first(int region) const {
        int number = 0;
        for (int r = 0; r < region; ++r) {
            number += kSteps[r] * (bounds[r + 1] - bounds[r]);
        }
        return number;
    }
    int nearest(float lag) const {
        const auto at = std::clamp(lag, static_cast<float>(bounds[0]), static_cast<float>(bounds[kRegions]));
        int region = 0;
        while (region + 1 < kRegions && at >= static_cast<float>(bounds[region + 1])) {
            ++region;
        }
        return first(region) + static_cast<int>(std::lround((at - static_cast<float>(bounds[region])) *
                                                            static_cast<float>(kSteps[region])));
    }
};

// The excitation at a lag before 0, all of it past.
float sampleAt(const float* exc, Lag lag) {
    return lag.part == 0 ? exc[-lag.whole]
                         : floatDotKernels().dot32f(g_interpolation.taps[lag.steps][lag.part], exc - lag.whole - kSide,
                                                    2 * kSide);
}

// The vector of a lag, as far at a time as it does not meet itself.
void makeVector(float* exc, Lag lag, int n) {
    for (int i = 0; i < n; i += lag.reach()) {
        const int count = std::min(n - i, lag.reach());
        if (lag.part == 0) {
            std::copy_n(exc + i - lag.whole, count, exc + i);
        } else {
            floatCorrKernels().corr32f(g_interpolation.taps[lag.steps][lag.part], exc + i - lag.whole - kSide,
                                       2 * kSide, count, exc + i);
        }
    }
}

struct Found {
    int number = -1;
    Lag lag{};
    Fit fit;
};

// Lags number first..last, those of one part of a sample after the other: the filtered vectors of far lags come out of
// one another.
Found search(const LagGrid& grid, int first, int last, float* exc, int n, const Response& response,
             const Padded& target) {
    Found best;
    Sliding<kMostLag> vector(response, n);
    for (int region = 0; region < kRegions; ++region) {
        const int steps = kSteps[region];
        const int base = grid.first(region);
        const int end = region + 1 < kRegions ? grid.bounds[region + 1] : grid.bounds[kRegions] + 1;
        for (int part = 0; part < steps; ++part) {
            bool running = false;
            for (int whole = grid.bounds[region]; whole < end; ++whole) {
                const int number = base + (whole - grid.bounds[region]) * steps + part;
                if (number < first || number > last) {
                    continue;
                }
                const Lag lag = {whole, part, steps};
                CommonSums sums;
                if (running) {
                    sums = vector.push(sampleAt(exc, lag), target.data(), target.data());
                } else {
                    makeVector(exc, lag, n);
                    vector.start(exc);
                    sums = vector.sums(target.data(), target.data());
                    running = lag.reach() >= n;
                }
                const Fit fit = {sums.target, sums.energy};
                if (best.number < 0 || fit.betterThan(best.fit)) {
                    best = {number, lag, fit};
                }
            }
        }
    }
    return best;
}

bool readBounds(const float* boundary, LagGrid& grid) {
    for (int i = 0; i <= kRegions; ++i) {
        const float b = boundary[i];
        const float least = i == 0 ? 1.0F : std::max(boundary[i - 1] + 1, static_cast<float>(kSide));
        if (!(b >= least) || b > kMostLag || b != std::floor(b)) {
            return false;
        }
        grid.bounds[i] = static_cast<int>(b);
    }
    return true;
}

} // namespace

VekStatus veksAdaptiveCodebookSearch_RTA_32f(const Vek32f* pSrcAdptTarget, const Vek32f* pSrcImpulseResponse,
                                             int subFrameSize, const Vek32f* pSrcBoundary, Vek32f* pSrcDstExc,
                                             Vek32f* pSrcDstLag, int* pDstAdptIndex, Vek32f* pDstAdptContribution,
                                             int deltaSearchRange, int searchFlag) {
    if (anyNull(pSrcAdptTarget, pSrcImpulseResponse, pSrcBoundary, pSrcDstExc, pSrcDstLag, pDstAdptContribution,
                pDstAdptIndex)) {
        return vekStsNullPtrErr;
    }
    if (subFrameSize < kLeastSubframe || subFrameSize > kMostSubframe) {
        return vekStsSizeErr;
    }
    LagGrid grid;
    if (!readBounds(pSrcBoundary, grid)) {
        return vekStsRangeErr;
    }
    if (searchFlag < 0 || searchFlag > 1 || deltaSearchRange < 1 || std::isnan(*pSrcDstLag)) {
        return vekStsBadArgErr;
    }
    int first = 0;
    int last = grid.count() - 1;
    if (searchFlag == 1 && deltaSearchRange <= last) {
        first = std::clamp(grid.nearest(*pSrcDstLag) - deltaSearchRange / 2, 0, last + 1 - deltaSearchRange);
        last = first + deltaSearchRange - 1;
    }
    const Response response(pSrcImpulseResponse, subFrameSize);
    const Padded target(pSrcAdptTarget, subFrameSize);
    const Found best = search(grid, first, last, pSrcDstExc, subFrameSize, response, target);
    makeVector(pSrcDstExc, best.lag, subFrameSize);
    response.filter(pSrcDstExc, pDstAdptContribution);
    *pSrcDstLag =
        static_cast<float>(best.lag.whole) + static_cast<float>(best.lag.part) / static_cast<float>(best.lag.steps);
    *pDstAdptIndex = best.number - first;
    return vekStsNoErr;
}
