// Correlation, convolution, products and scaling by their definitions, which hold for any data: inner products are
// exact, then saturated or brought to 32 bits; correlations look at the energies before they count in 32 bits.
// Convolutions count so without a look, as the data leave them room.
#include "plain/signal.h"

namespace PLAIN_BUILD::signal {

inline int64_t exactDot(const Vek16s* a, const Vek16s* b, int n) {
    int64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

int32_t dot(const Vek16s* a, const Vek16s* b, int n) {
    return static_cast<int32_t>(std::clamp<int64_t>(exactDot(a, b, n), INT32_MIN, INT32_MAX));
}

int32_t scaledDot(const Vek16s* a, const Vek16s* b, int n, int* drop) {
    const int64_t sum = exactDot(a, b, n);
    *drop = 0;
    while (sum >> *drop != static_cast<int32_t>(sum >> *drop)) {
        ++*drop;
    }
    return static_cast<int32_t>(sum >> *drop);
}

float dotF(const float* a, const float* b, int n) {
    float sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

// sum of a[i] * b[i - k], of which the autocorrelation is the case of a = b. The energies tell whether 32 bits hold the
// sums, as they do here.
void correlate(const Vek16s* a, const Vek16s* b, int n, int32_t* d, int lags) {
    const auto energyA = static_cast<double>(exactDot(a, a, n));
    const double energyB = a == b ? energyA : static_cast<double>(exactDot(b, b, n));
    if (energyA * energyB > 4.6e18) {
        for (int k = 0; k < lags; ++k) {
            d[k] = dot(a + k, b, n - k);
        }
        return;
    }
    for (int k = 0; k < lags; ++k) {
        int32_t sum = 0;
        for (int i = k; i < n; ++i) {
            sum += a[i] * b[i - k];
        }
        d[k] = sum;
    }
}

// Brings d to where d[0], or its largest magnitude, has its top bit at `top`.
void normalise(int32_t* d, int n, int32_t most, int top) {
    const int shift = most == 0 ? 0 : top + 1 - (32 - __builtin_clz(static_cast<unsigned>(most)));
    for (int k = 0; k < n; ++k) {
        d[k] = shift > 0 ? d[k] << shift : d[k] >> -shift;
    }
}

void high(const int32_t* d, Vek16s* y, int n, int shift) {
    for (int k = 0; k < n; ++k) {
        y[k] = rounded(d[k], shift);
    }
}

void normaliseByLargest(int32_t* d, int n, int top) {
    int32_t most = 0;
    for (int k = 0; k < n; ++k) {
        most = std::max(most, std::abs(d[k]));
    }
    normalise(d, n, most, top);
}

// Sample by sample of x, which compilers vectorise better than output by output.
void convolve(const Vek16s* x, const Vek16s* h, int32_t* y, int n) {
    std::fill_n(y, n, 0);
    for (int i = 0; i < n; ++i) {
        for (int k = 0; k < n - i; ++k) {
            y[i + k] += x[i] * h[k];
        }
    }
}

void convolve16(const Vek16s* x, const Vek16s* h, Vek16s* y, int n, int shift, int half) {
    int32_t sums[80];
    convolve(x, h, sums, n);
    for (int k = 0; k < n; ++k) {
        y[k] = narrow((sums[k] + half) >> shift);
    }
}

int scaled(const Vek16s* x, Vek16s* y, int n, int bits) {
    int most = 0;
    for (int i = 0; i < n; ++i) {
        most = std::max<int>(most, x[i] < 0 ? ~x[i] : x[i]);
    }
    const int shift = most == 0 ? 0 : __builtin_clz(static_cast<unsigned>(most)) - 17 - bits;
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Vek16s>(shift > 0 ? x[i] * (1 << shift) : x[i] >> -shift);
    }
    return shift;
}

} // namespace PLAIN_BUILD::signal
