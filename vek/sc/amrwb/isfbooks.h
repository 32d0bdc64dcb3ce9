// Codebooks of immittance spectral frequencies, in the layout that the search reads.
#pragma once

#include "sc/amrwb/rates.h"
#include "vekdefs.h"

namespace vek::amrwb {

struct IsfBook {
    const Vek16s* pairs; // [(columns + 1) / 2][rows][2]
    int rows;            // a multiple of 8
    int columns;
};

/// A book that the search may read: an odd last column stands beside zeros, which its distances count.
template <int size>
consteval IsfBook isfBook(const Vek16s (&pairs)[size], int rows, int columns) {
    if (size != (columns + 1) / 2 * 2 * rows) {
        throw "a figure is missing";
    }
    for (int row = 0; columns % 2 != 0 && row < rows; ++row) {
        if (pairs[(columns / 2 * rows + row) * 2 + 1] != 0) {
            throw "beside the last column stands no zero";
        }
    }
    return {pairs, rows, columns};
}

inline Vek16s element(const IsfBook& book, int row, int column) {
    return book.pairs[(column / 2 * book.rows + row) * 2 + column % 2];
}

extern const IsfBook kIsfLow, kIsfHigh;
extern const IsfBook kIsfLow46a, kIsfLow46b, kIsfLow46c, kIsfHigh46a, kIsfHigh46b;
extern const IsfBook kIsfLow36a, kIsfLow36b, kIsfHigh36;
extern const IsfBook kIsfNoise1, kIsfNoise2, kIsfNoise3, kIsfNoise4, kIsfNoise5;
extern const Vek16s kIsfMean[kOrder];
extern const Vek16s kIsfNoiseMean[kOrder];

} // namespace vek::amrwb
