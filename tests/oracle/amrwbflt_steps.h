// Steps of two open AMR-WB codecs, which no public header declares: filters, conversions and quantisers.
#pragma once

#include <cstdint>

extern "C" {
void voAWB_Residu(int16_t* a, int16_t* x, int16_t* y, int16_t n);
void Preemph2(int16_t* x, int16_t mu, int16_t n, int16_t* mem);
void Deemph(int16_t* x, int16_t mu, int16_t n, int16_t* mem);
void Deemph2(int16_t* x, int16_t mu, int16_t n, int16_t* mem);
void HP50_12k8(int16_t* x, int16_t n, int16_t* mem);
void HP400_12k8(int16_t* x, int16_t n, int16_t* mem);
void Isp_isf(int16_t* isp, int16_t* isf, int16_t m);
void voAWB_Isp_Az(int16_t* isp, int16_t* a, int16_t m, int16_t scaling);
void voAWB_Isf_isp(int16_t* isf, int16_t* isp, int16_t m);
void Az_isp(int16_t* a, int16_t* isp, int16_t* old);
int16_t voAWB_G_pitch(int16_t* target, int16_t* vector, int16_t* coeff, int16_t n);
void Qpisf_2s_46b(int16_t* isf, int16_t* quantised, int16_t* past, int16_t* index, int16_t survivors);
void Qpisf_2s_36b(int16_t* isf, int16_t* quantised, int16_t* past, int16_t* index, int16_t survivors);
void voAWB_Qisf_ns(int16_t* isf, int16_t* quantised, int16_t* index);
void deemphasis_32(int16_t* high, int16_t* low, int16_t* y, int16_t mu, int16_t n, int16_t* mem);
void Syn_filt_32(int16_t* a, int16_t m, int16_t* x, int16_t q, int16_t* high, int16_t* low, int16_t n);
void Dpisf_2s_46b(int16_t* index, int16_t* isf, int16_t* past, int16_t* old, int16_t* buffer, int16_t bfi,
                  int16_t update);
void Disf_ns(int16_t* index, int16_t* isf);
}
