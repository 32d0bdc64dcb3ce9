// Searches of the real-time audio codec by their definitions: each vector of the codebook is filtered and compared.
#include "plain/rta.h"

namespace PLAIN_BUILD::rta {

// Convolution of every vector of a codebook and two sums: the search without any of its short cuts.
template <class Vector>
inline float search(const float* target, const float* h, int n, int count, Vector vector) {
    float best = -1;
    for (int k = 0; k < count; ++k) {
        const float* x = vector(k);
        float correlation = 0;
        float energy = 0;
        for (int i = 0; i < n; ++i) {
            float y = 0;
            for (int j = 0; j <= i; ++j) {
                y += x[j] * h[i - j];
            }
            correlation += y * target[i];
            energy += y * y;
        }
        best = std::fmax(best, correlation * correlation / energy);
    }
    return best;
}

// Half a sample of delay apart.
float searchDelays(const float* target, const float* h, int n, const float* past, int count) {
    return search(target, h, n, count, [past](int k) { return past - k / 2; });
}
float searchVectors(const float* target, const float* h, int n, const float* vectors, int count) {
    return search(target, h, n, count, [vectors](int k) { return vectors + k; });
}

} // namespace PLAIN_BUILD::rta
