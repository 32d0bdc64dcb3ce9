// Pitch steps of the narrow-band AMR codec's package, which stand in none of its public headers.
#pragma once

#include <cstdint>
#include <vector>

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
void Pred_lt_3or6(int16_t* excitation, int16_t delay, int16_t fraction, int16_t n, int16_t thirds, int* overflow);
}

/// A lag in whole samples and thirds.
struct AmrLag {
    int16_t whole = 0;
    int16_t fraction = 0;
};

/// The lag that the search of the mode finds around an open-loop one; the excitation has 154 samples of the past.
inline AmrLag amrLag(int mode, int16_t open, std::vector<int16_t>& excitation, std::vector<int16_t>& target,
                     std::vector<int16_t>& h, bool second) {
    AmrLag lag;
    int16_t last = open;
    int16_t opens[2] = {open, open};
    int16_t thirds = 0;
    int16_t index = 0;
    int overflow = 0;
    lag.whole = Pitch_fr(&last, mode, opens, excitation.data() + 154, target.data(), h.data(), 40,
                         static_cast<int16_t>(second ? 40 : 0), &lag.fraction, &thirds, &index, &overflow);
    return lag;
}

/// The gain of the adaptive vector in a mode with thirds.
inline int16_t amrPitchGain(std::vector<int16_t>& target, std::vector<int16_t>& filtered) {
    int16_t products[4] = {};
    int overflow = 0;
    return G_pitch(4, target.data(), filtered.data(), products, 40, &overflow);
}
#endif
