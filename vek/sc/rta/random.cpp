// Search of the random codebook of the real-time audio codec.
#include <algorithm>
#include <cmath>

#include "sc/common/signal_check.h"
#include "sc/kernels/floatdot.h"
#include "sc/kernels/loops.h"
#include "sc/rta/gauss.h"
#include "sc/rta/response.h"
#include "veksc_rta.h"

namespace {

using namespace vek::rta;

constexpr int kStages = 3;
constexpr int kMostEntries = 256;
constexpr int kShift = 2; // of a vector behind the next
constexpr int kSlide = kShift * (kMostEntries - 1);
constexpr int kLeastSubframe = 4;
constexpr int kMostLimit = 20;

struct RandomBooks {
    float numbers[kStages][kSlide + kMostSubframe];
};

RandomBooks makeBooks() {
    RandomBooks books;
    for (int s = 0; s < kStages; ++s) {
        Gauss gauss(static_cast<uint32_t>(s + 1));
        for (float& number : books.numbers[s]) {
            number = static_cast<float>(gauss.next());
        }
    }
    return books;
}

const RandomBooks g_books = makeBooks();

struct Sum {
    Fit fit;
    int index = 0;
};

// The best vector of a stage with what the stages before have found, `before` being that filtered.
Sum searchStage(const float* numbers, int entries, float weight, int n, const Response& response, const Padded& target,
                const Padded& before, const Fit& fitBefore) {
    Sliding<kSlide> vector(response, n);
    vector.start(numbers + kSlide);
    CommonSums sums = vector.sums(target.data(), before.data());
    Sum best;
    for (int k = 0;;) {
        for (int negative = 0; negative < 2; ++negative) {
            const float factor = negative != 0 ? -weight : weight;
            const Fit fit = {fitBefore.correlation + factor * sums.target,
                             fitBefore.energy + 2 * factor * sums.other + weight * weight * sums.energy};
            if (fit.betterThan(best.fit)) {
                best = {fit, 2 * k + negative};
            }
        }
        if (++k == entries) {
            return best;
        }
        const float* fresh = numbers + kSlide - kShift * k;
        vector.push(fresh[1]);
        sums = vector.push(fresh[0], target.data(), before.data());
    }
}

} // namespace

VekStatus veksFixedCodebookSearchRandom_RTA_32f(const Vek32f* pSrcFixedTarget, const Vek32f* pSrcImpulseResponse,
                                                Vek32f* pDstFixedVector, int subFrameSize, int* pDstFixedIndex,
                                                Vek32f* pDstGain, int codebookSize, int nStage, int gainLimit) {
    if (anyNull(pSrcFixedTarget, pSrcImpulseResponse, pDstFixedVector, pDstGain, pDstFixedIndex)) {
        return vekStsNullPtrErr;
    }
    if (subFrameSize < kLeastSubframe || subFrameSize > kMostSubframe) {
        return vekStsSizeErr;
    }
    if (codebookSize < 1 || codebookSize > kMostEntries || nStage < 0 || nStage >= kStages || gainLimit < 0 ||
        gainLimit > kMostLimit) {
        return vekStsRangeErr;
    }
    const int n = subFrameSize;
    const Response response(pSrcImpulseResponse, n);
    const Padded target(pSrcFixedTarget, n);
    float vector[kMostSubframe] = {};
    float filtered[kMostSubframe] = {};
    Fit fit;
    float weight = 1;
    for (int s = 0; s <= nStage; ++s) {
        const float* numbers = g_books.numbers[s];
        const Sum best = searchStage(numbers, codebookSize, weight, n, response, target, Padded(filtered, n), fit);
        const float* entry = numbers + kSlide - kShift * (best.index / 2);
        loopKernels().addScaled32f(vector, entry, best.index % 2 != 0 ? -weight : weight, vector, n);
        response.filter(vector, filtered);
        fit = {floatDotKernels().dot32f(target.data(), filtered, n), floatDotKernels().dot32f(filtered, filtered, n)};
        pDstFixedIndex[s] = best.index;
        weight *= 0.5F;
    }
    float gain = fit.gain();
    if (gainLimit > 0 && fit.energy > 0) {
        const float power = floatDotKernels().dot32f(target.data(), target.data(), n);
        const float most = std::sqrt(power / fit.energy) * std::pow(10.0F, -0.15F * static_cast<float>(gainLimit));
        gain = std::clamp(gain, -most, most);
    }
    std::copy_n(vector, n, pDstFixedVector);
    *pDstGain = gain;
    return vekStsNoErr;
}
