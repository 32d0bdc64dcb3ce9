// Steps of two open AMR-WB codecs, which no public header declares: codebooks, pitch and gains.
#pragma once

#include <cstdint>

extern "C" {
void voAWB_cor_h_x(int16_t* h, int16_t* x, int16_t* dn);
void ACELP_2t64_fx(int16_t* dn, int16_t* cn, int16_t* h, int16_t* code, int16_t* y, int16_t* index);
void ACELP_4t64_fx(int16_t* dn, int16_t* cn, int16_t* h, int16_t* code, int16_t* y, int16_t bits, int16_t size,
                   int16_t* index);
int16_t Pitch_fr4(int16_t* exc, int16_t* xn, int16_t* h, int16_t first, int16_t last, int16_t* fraction,
                  int16_t subframe, int16_t halves, int16_t wholes, int16_t n);
void voAWB_Pred_lt4(int16_t* exc, int16_t lag, int16_t fraction, int16_t n);
int16_t voAWB_G_pitch(int16_t* xn, int16_t* y1, int16_t* coefficients, int16_t n);
int16_t Q_gain2(int16_t* xn, int16_t* y1, int16_t format, int16_t* y2, int16_t* code, int16_t* coefficients, int16_t n,
                int16_t bits, int16_t* pitch, int32_t* gain, int16_t clip, int16_t* memory);
int16_t Pitch_med_ol(int16_t* speech, void* coder, int16_t n);
int16_t Med_olag(int16_t lag, int16_t* lags);
void dec_acelp_2p_in_64(int16_t index, int16_t* code);
void dec_acelp_4p_in_64(int16_t* index, int16_t bits, int16_t* code);
void Pred_lt4(int16_t* exc, int16_t lag, int16_t fraction, int16_t n);
void dec_gain2_amr_wb_init(int16_t* memory);
void dec_gain2_amr_wb(int16_t index, int16_t bits, int16_t* code, int16_t n, int16_t* pitch, int32_t* gain, int16_t bfi,
                      int16_t prevBfi, int16_t state, int16_t lost, int16_t history, int16_t* memory);
}
