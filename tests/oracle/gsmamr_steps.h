// Steps of an open AMR codec, which no public header declares: codebooks, delays and the post filter.
#pragma once

#include <cstdint>

extern "C" {
struct AmrTables {
    const void* entries[64];
};
void get_const_tbls(void* tables);
void cbsearch(int16_t* target, int16_t* h, int16_t lag, int16_t sharp, int16_t gain, int16_t* residual, int16_t* vector,
              int16_t* filtered, int16_t** words, int mode, int16_t subframe, AmrTables* tables, int* overflow);
void Dec_lag3(int16_t index, int16_t first, int16_t last, int16_t offset, int16_t former, int16_t* lag,
              int16_t* fraction, int16_t coarse, int* overflow);
void decode_4i40_17bits(int16_t sign, int16_t index, const int16_t* fromGray, int16_t* vector);
void dec_8i40_31bits(int16_t* index, int16_t* vector, int* overflow);
void dec_10i40_35bits(int16_t* index, int16_t* vector, const int16_t* fromGray);
extern const int16_t dgray[];
void preemphasis(int16_t* state, int16_t* signal, int16_t g, int16_t n, int* overflow);
void Int_lsf(int16_t* before, int16_t* now, int16_t offset, int16_t* out, int* overflow);
void Lsf_lsp(int16_t* lsf, int16_t* lsp, int16_t n, int* overflow);
int16_t Post_Filter_reset(void* state);
void Post_Filter(void* state, int mode, int16_t* speech, int16_t* lpc, int* overflow);
}
