// Problems for the fixed codebook searches of G.729 and the code vectors of their codewords. Used by the tests of the
// searches; shares no code with them.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "lp_reference.h"
#include "veksc.h"

namespace pulseref {

using lpref::response;
using Words = std::vector<int32_t>;
using Reals = std::vector<float>;

struct Problem {
    Samples target, h, d = Samples(40);
    Samples matrix = Samples(616);
    Words wide = Words(616);
    Reals real = Reals(616), realD, realH;

    explicit Problem(std::mt19937& random) : target(noise(random, 40, -3000, 3000)), h(response(random)) {
        veksCrossCorr_NormM_16s(target.data(), h.data(), 40, d.data());
        veksToeplizMatrix_G729_16s(h.data(), matrix.data());
        veksToeplizMatrix_G729_16s32s(h.data(), wide.data());
        realD.assign(d.begin(), d.end());
        realH.assign(h.begin(), h.end());
        veksToeplizMatrix_G729_32f(realH.data(), real.data());
    }

    double phi(int i, int j) const {
        double s = 0;
        for (int n = std::max(i, j); n < 40; ++n) {
            s += double{1} * h[n - i] * h[n - j];
        }
        return s;
    }

    // Squared correlation over energy of pulses with signs.
    template <class Code>
    double merit(const Code& code) const {
        double c = 0;
        double e = 0;
        for (int i = 0; i < 40; ++i) {
            c += double{1} * code[i] * d[i];
            for (int j = 0; j < 40; ++j) {
                e += code[i] != 0 && code[j] != 0 ? phi(i, j) * code[i] * code[j] : 0;
            }
        }
        return c * c / e;
    }
};

// A problem of the searches for ten (mode 0) and twelve pulses, and what they found for it last.
struct ManyPulses : Problem {
    Samples residual;
    Reals realTarget, realResidual;
    Samples code = Samples(40), y = Samples(40), words = Samples(5);
    Reals realCode = Reals(40), realY = Reals(40);

    explicit ManyPulses(std::mt19937& random)
        : Problem(random), residual(noise(random, 40, -2000, 2000)), realTarget(target.begin(), target.end()),
          realResidual(residual.begin(), residual.end()) {}

    VekStatus search(int mode) {
        return veksFixedCodebookSearch_G729E_16s(mode, target.data(), residual.data(), h.data(), code.data(), y.data(),
                                                 words.data());
    }
    VekStatus searchReal(int mode) {
        return veksFixedCodebookSearch_G729E_32f(mode, realTarget.data(), realResidual.data(), realH.data(),
                                                 realCode.data(), realY.data(), words.data());
    }
};

// The code vector of a codeword of four pulses, ones.
inline std::vector<int> decodeFour(int positions, int signs) {
    std::vector<int> code(40);
    for (int n = 0; n < 4; ++n) {
        const int field = positions >> (3 * n);
        const int at = n < 3 ? 5 * (field & 7) + n : 5 * (field >> 1 & 7) + 3 + (field & 1);
        code[at] = signs >> n & 1 ? 1 : -1;
    }
    return code;
}

template <class Code>
std::vector<int> ones(const Code& code, double size) {
    std::vector<int> v;
    for (const auto e : code) {
        v.push_back(static_cast<int>(std::lround(e / size)));
    }
    return v;
}

} // namespace pulseref
