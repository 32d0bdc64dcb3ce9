// Filters of subbands and their updates by their definitions, in 64-bit integers and in single precision.
#include "plain/subband.h"

namespace PLAIN_BUILD::subband {

void filter(const Vek32sc* const* x, const Vek32sc* const* c, Vek32sc* y, int segments, int n) {
    int64_t re[kBands] = {};
    int64_t im[kBands] = {};
    for (int s = 0; s < segments; ++s) {
        for (int k = 0; k < n; ++k) {
            re[k] += int64_t{x[s][k].re} * c[s][k].re - int64_t{x[s][k].im} * c[s][k].im;
            im[k] += int64_t{x[s][k].re} * c[s][k].im + int64_t{x[s][k].im} * c[s][k].re;
        }
    }
    for (int k = 0; k < n; ++k) {
        y[k].re = static_cast<Vek32s>(re[k] >> 15);
        y[k].im = static_cast<Vek32s>(im[k] >> 15);
    }
}

void update(const Vek32s* step, const Vek32sc* const* x, const Vek32sc* e, Vek32sc** c, int segments, int n) {
    Vek32sc p[kBands];
    for (int k = 0; k < n; ++k) {
        p[k].re = static_cast<Vek32s>((int64_t{step[k]} * e[k].re) >> 15);
        p[k].im = static_cast<Vek32s>((int64_t{step[k]} * e[k].im) >> 15);
    }
    for (int s = 0; s < segments; ++s) {
        for (int k = 0; k < n; ++k) {
            c[s][k].re += static_cast<Vek32s>((int64_t{x[s][k].re} * p[k].re + int64_t{x[s][k].im} * p[k].im) >> 20);
            c[s][k].im += static_cast<Vek32s>((int64_t{x[s][k].re} * p[k].im - int64_t{x[s][k].im} * p[k].re) >> 20);
        }
    }
}

void project(const Vek64f* const* step, const Vek32fc* const* x, const Vek32fc* const* e, Vek32fc** c, int segments,
             int n, int order) {
    for (int p = 0; p < order; ++p) {
        Vek32fc w[kBands];
        for (int k = 0; k < n; ++k) {
            w[k].re = static_cast<float>(e[p][k].re * step[p][k]);
            w[k].im = static_cast<float>(e[p][k].im * step[p][k]);
        }
        for (int s = 0; s < segments; ++s) {
            for (int k = 0; k < n; ++k) {
                c[s][k].re += x[s + p][k].re * w[k].re + x[s + p][k].im * w[k].im;
                c[s][k].im += x[s + p][k].re * w[k].im - x[s + p][k].im * w[k].re;
            }
        }
    }
}

} // namespace PLAIN_BUILD::subband
