// The lattice RE8 = 2 D8 and 2 D8 + (1, ..., 1): nearest points, codebooks of leaders and their extension, indices.
//
// A codebook of number n = 0, 2, 3, 4, ... has 2^(4 n) points or fewer. 0 holds the origin; 2, 3 and 4 take the
// leaders in the order of their norm, each as a whole if it still fits; from 5 on n is 2 r more than 3 or 4, and a
// point is 2^r times one of that codebook plus one of the 2^(8 r) points of a Voronoi region.
#pragma once

#include <array>
#include <cstdint>

namespace vek::lattice {

constexpr int kDim = 8;
constexpr int kLargestNumber = 34; // 16-bit samples need no more
using Point = std::array<int32_t, kDim>;

struct Code {
    int number;      // of the codebook
    int32_t base;    // index in the codebook without extension
    Point extension; // 0..2^r-1 each
};

// Nearest point to x; at equal distance the one of the first half of the lattice.
Point nearest(const std::array<float, kDim>& x);

// Code of a point; false if it lies beyond the largest codebook.
bool encode(const Point& x, Code& code);
// Point of a code whose index may be any of 4 n bits; an index without a point gives the origin.
Point decode(const Code& code);

// Order of the extension of a codebook, and the number of its base.
constexpr int extensionOf(int number) {
    return number < 5 ? 0 : (number - 3) / 2;
}
constexpr int bitsOf(int number) {
    return number == 0 ? 1 : 5 * number;
}

} // namespace vek::lattice
