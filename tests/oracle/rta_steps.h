// Float steps of another codec, which no public header declares.
#pragma once

#include <cstdint>

extern "C" {
void _spx_lpc(float* lpc, const float* ac, int order);
int lpc_to_lsp(float* a, int order, float* freq, int bisections, float delta, char* stack);
void lsp_to_lpc(const float* freq, float* a, int order, char* stack);
void qmf_decomp(const float* x, const float* taps, float* low, float* high, int len, int count, float* memory,
                char* stack);
void qmf_synth(const float* low, const float* high, const float* taps, float* y, int len, int count, float* memory1,
               float* memory2, char* stack);
void filter_mem16(const float* x, const float* numerator, const float* denominator, float* y, int len, int order,
                  float* memory, char* stack);
}
