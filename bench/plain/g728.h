// Declares the loops of loops/g728.cpp.
#pragma once

#include "plain/plain.h"

namespace PLAIN_BUILD::g728 {

constexpr int kOrder = 50;
constexpr int kVector = 5;
constexpr int kShapes = 128;

struct State {
    alignas(32) float lpc[kOrder];
    alignas(32) float past[kOrder + 4 * kVector];
    alignas(32) float exc[kVector];
    alignas(32) float window[105];
    alignas(32) float history[105];
    alignas(32) float windowed[105];
    alignas(32) float correlation[kOrder + 1];
    alignas(32) float kept[kOrder + 1];
    alignas(32) float a[kOrder];
    alignas(32) float shapes[kShapes][kVector];
    alignas(32) float energies[kShapes];
    alignas(32) float pn[kVector];
    alignas(32) float impulse[kVector];
    alignas(32) float weights[20];
    alignas(32) float residual[260];
    alignas(32) float in[15];
    alignas(32) float out[15];
    float scale = 1;
};

void synthesise(State& s);
void window(State& s, const Vek16s* frame);
void levinson(State& s, int order);
int search(const State& s);
void filterShapes(State& s);
void poleZero(State& s, const float* __restrict x);
void inverse(State& s, const float* __restrict x);
int postFilter(State& s);
int pitch(const State& s);

} // namespace PLAIN_BUILD::g728
