// Noise excitation of the comfort noise of G.729 Annex B.
#include <array>
#include <cstddef>
#include <cstdint>

#include "sc/common/signal_check.h"
#include "veksc_g729code.h"

namespace {

using namespace vek;

constexpr int kTerms = 12;

// The generator's next twelve states as functions of the present one: seed * factor + offset modulo 2^16.
struct Steps {
    std::array<uint16_t, kTerms> factor{};
    std::array<uint16_t, kTerms> offset{};
};

constexpr Steps makeSteps() {
    Steps steps;
    uint32_t factor = 1;
    uint32_t offset = 0;
    for (std::size_t i = 0; i < kTerms; ++i) {
        factor = factor * 31821 & 0xffff;
        offset = (offset * 31821 + 13849) & 0xffff;
        steps.factor[i] = static_cast<uint16_t>(factor);
        steps.offset[i] = static_cast<uint16_t>(offset);
    }
    return steps;
}

constexpr Steps kSteps = makeSteps();

template <class Put>
VekStatus noise(Vek16s* pSeed, int len, Put put) {
    auto seed = static_cast<uint16_t>(*pSeed);
    for (int n = 0; n < len; ++n) {
        int sum = 0;
        uint16_t state = 0;
        for (std::size_t i = 0; i < kTerms; ++i) {
            state = static_cast<uint16_t>(uint32_t{seed} * kSteps.factor[i] + kSteps.offset[i]);
            sum += static_cast<int16_t>(state);
        }
        put(n, sum);
        seed = state;
    }
    *pSeed = static_cast<Vek16s>(seed);
    return vekStsNoErr;
}

} // namespace

VekStatus veksRandomNoiseExcitation_G729B_16s(Vek16s* pSeed, Vek16s* pExc, int len) {
    if (const VekStatus status = checkSignal(len, pSeed, pExc); status != vekStsNoErr) {
        return status;
    }
    return noise(pSeed, len, [&](int n, int sum) { pExc[n] = static_cast<Vek16s>(sum >> 7); });
}

VekStatus veksRandomNoiseExcitation_G729B_16s32f(Vek16s* pSeed, Vek32f* pExc, int len) {
    if (const VekStatus status = checkSignal(len, pSeed, pExc); status != vekStsNoErr) {
        return status;
    }
    return noise(pSeed, len, [&](int n, int sum) { pExc[n] = static_cast<Vek32f>(sum) / 128; });
}
