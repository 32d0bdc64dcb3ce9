// The functions that the comparison measures. Data are a fixed pseudo-random speech-like signal.
#include "subjects.h"

#include "veksc.h"

namespace {

constexpr int longest = 4096;
constexpr int mostLags = 64;
Vek16s signal[longest];
Vek16s impulse[40];
Vek16s filtered[40];
Vek16s memory[10];
Vek16s matrix[616];
Vek32s correlations[mostLags];
Vek32s product;
const Vek16s lpc[11] = {4096, 852, 825, 441, 159, -209, -411, -420, -494, -593, -711};

bool fill() {
    unsigned state = 7;
    int level = 0;
    for (Vek16s& sample : signal) {
        state = state * 69069U + 1013904243U;
        level += (static_cast<int>(state >> 20) - 2048 - level / 8) / 4;
        sample = static_cast<Vek16s>(level);
    }
    for (int i = 0; i < 40; ++i) {
        impulse[i] = static_cast<Vek16s>((i % 2 == 0 ? 4096 : -4096) / (i + 1));
    }
    return true;
}
const bool filled = fill();

} // namespace

const Subject subjects[subjectCount] = {{"empty", subjectEmpty},
                                        {"dot 40", subjectDot40},
                                        {"dot 240", subjectDot240},
                                        {"autocorrelation 240x11", subjectAutoCorr},
                                        {"matrix 616", subjectMatrix},
                                        {"synthesis 40, order 10", subjectSynthesis},
                                        {"autocorrelation 4096x64", subjectLong}};

__attribute__((noinline)) int subjectEmpty() {
    __asm__ volatile("");
    return 0;
}

int subjectDot40() {
    return veksDotProd_G729A_16s32s(signal, signal + 40, 40, &product);
}

int subjectDot240() {
    return veksDotProd_G729A_16s32s(signal, signal + 240, 240, &product);
}

int subjectAutoCorr() {
    return veksAutoCorr_16s32s(signal, 240, correlations, 11);
}

int subjectMatrix() {
    return veksToeplizMatrix_G729_16s(impulse, matrix);
}

int subjectSynthesis() {
    return veksSynthesisFilter_NR_16s_Sfs(lpc, signal, filtered, 40, 12, memory);
}

int subjectLong() {
    return veksAutoCorr_16s32s(signal, longest, correlations, mostLags);
}
