// Points, codebooks and indices of the lattice RE8.
#include "sc/amrwbe/lattice.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "sc/common/arrangements.h"

namespace vek::lattice {
namespace {

constexpr int kClasses = 160;
constexpr int kLargestNorm = 400;

struct Leader {
    std::array<int8_t, kDim> element; // descending, not negative
    int32_t first;                    // index of its first point in codebooks 3 and 4, or in 2
    int32_t arrangements;
    int8_t signs; // bits
};

struct Codebook {
    std::array<Leader, kClasses> leader;
    int count;
};

// Signs are free for even points; for odd ones the last follows from the sum, which is a multiple of four.
int signBits(const std::array<int8_t, kDim>& leader) {
    const auto nonzero = static_cast<int>(std::count_if(leader.begin(), leader.end(), [](int8_t e) { return e != 0; }));
    return leader[0] % 2 != 0 ? kDim - 1 : nonzero;
}

// Even leaders need an even number of elements that are 2 modulo 4; odd ones get there by their signs.
bool inLattice(const std::array<int8_t, kDim>& leader) {
    int sum = 0;
    for (const int8_t e : leader) {
        if ((e - leader[0]) % 2 != 0) {
            return false;
        }
        sum += e;
    }
    return leader[0] % 2 != 0 || sum % 4 == 0;
}

// Takes leaders by norm, within a norm by descending elements, as long as they fit.
struct Builder {
    int32_t room;
    int32_t used = 0;
    Codebook book{};

    void take(const std::array<int8_t, kDim>& leader) {
        if (!inLattice(leader)) {
            return;
        }
        const auto orders = static_cast<int32_t>(arrangements(countsOf(leader), kDim));
        const int bits = signBits(leader);
        const int32_t points = orders << bits;
        if (points <= room - used && book.count < kClasses) {
            book.leader[static_cast<size_t>(book.count++)] = {leader, used, orders, static_cast<int8_t>(bits)};
            used += points;
        }
    }
    void walk(std::array<int8_t, kDim>& leader, size_t at, int largest, int norm) {
        if (at == kDim) {
            if (norm == 0) {
                take(leader);
            }
            return;
        }
        for (int e = largest; e >= 0; --e) {
            // No larger one follows: the rest must be in reach.
            if (e * e <= norm && e * e * static_cast<int>(kDim - at) >= norm) {
                leader[at] = static_cast<int8_t>(e);
                walk(leader, at + 1, e, norm - e * e);
            }
        }
    }
};

Codebook build(int number) {
    Builder builder{.room = 1 << (4 * number)};
    for (int norm = number == 2 ? 8 : 0; norm <= kLargestNorm && builder.used < builder.room; norm += 8) {
        std::array<int8_t, kDim> leader{};
        builder.walk(leader, 0, static_cast<int>(std::sqrt(norm)), norm);
    }
    return builder.book;
}

// Codebooks 2, 3 and 4; 3 and 4 begin with the origin, which their extensions need. Made at first use: few programs
// that load the library quantise with them.
const Codebook& book(int number) {
    static const std::array<Codebook, 3> books = {build(2), build(3), build(4)};
    return books[static_cast<size_t>(number - 2)];
}

bool findInBook(const Point& x, int number, int32_t& index) {
    std::array<int8_t, kDim> size{};
    int norm = 0;
    for (size_t i = 0; i < kDim; ++i) {
        const int32_t e = std::abs(x[i]);
        if (e > 20) {
            return false;
        }
        size[i] = static_cast<int8_t>(e);
        norm += static_cast<int>(e * e);
    }
    if (norm > kLargestNorm) {
        return false;
    }
    auto leader = size;
    std::sort(leader.begin(), leader.end(), std::greater<>());
    const Codebook& b = book(number);
    for (int c = 0; c < b.count; ++c) {
        const Leader& l = b.leader[static_cast<size_t>(c)];
        if (l.element == leader) {
            int32_t signs = 0;
            int bit = 0;
            for (size_t i = 0; i < kDim && bit < l.signs; ++i) {
                if (x[i] != 0) {
                    signs |= (x[i] < 0 ? 1 : 0) << bit++;
                }
            }
            index = l.first + (static_cast<int32_t>(rankOf(size.data(), kDim, countsOf(leader))) << l.signs) + signs;
            return true;
        }
    }
    return false;
}

Point pointOfBook(int32_t index, int number) {
    const Codebook& b = book(number);
    Point x{};
    for (int c = b.count - 1; c >= 0; --c) {
        const Leader& l = b.leader[static_cast<size_t>(c)];
        const int32_t inside = index - l.first;
        if (inside < 0) {
            continue;
        }
        if (inside >= l.arrangements << l.signs) {
            return x; // behind the last leader
        }
        std::array<int8_t, kDim> size{};
        arrangementOf(inside >> l.signs, countsOf(l.element), size.data(), kDim);
        int bit = 0;
        int32_t sum = 0;
        for (size_t i = 0; i < kDim; ++i) {
            const bool negative = size[i] != 0 && bit < l.signs && (inside >> bit & 1) != 0;
            bit += size[i] != 0 ? 1 : 0;
            x[i] = negative ? -size[i] : size[i];
            sum += x[i];
        }
        if (l.element[0] % 2 != 0 && sum % 4 != 0) {
            x[kDim - 1] = -x[kDim - 1];
        }
        return x;
    }
    return x;
}

// A basis of the lattice: (4, 0, ...), (2, .., 2, ..) with the twos at 0 and i, and (1, ..., 1).
Point fromBasis(const Point& k) {
    Point x{};
    x[0] = 4 * k[0];
    for (size_t i = 1; i < kDim - 1; ++i) {
        x[0] += 2 * k[i];
        x[i] += 2 * k[i];
    }
    for (size_t i = 0; i < kDim; ++i) {
        x[i] += k[kDim - 1];
    }
    return x;
}

Point toBasis(const Point& x) {
    Point k{};
    k[kDim - 1] = x[kDim - 1];
    int32_t rest = x[0] - x[kDim - 1];
    for (size_t i = 1; i < kDim - 1; ++i) {
        k[i] = (x[i] - x[kDim - 1]) / 2;
        rest -= 2 * k[i];
    }
    k[0] = rest / 4;
    return k;
}

// The point of the Voronoi region of 2^r times the lattice, moved by a little so that no point lies on its border.
Point region(const Point& k, int r) {
    const Point v = fromBasis(k);
    std::array<float, kDim> scaled;
    const float m = std::ldexp(1.0F, -r);
    for (size_t i = 0; i < kDim; ++i) {
        scaled[i] = (static_cast<float>(v[i]) - static_cast<float>(kDim - i) / 64) * m;
    }
    Point w = nearest(scaled);
    for (size_t i = 0; i < kDim; ++i) {
        w[i] = v[i] - w[i] * (1 << r);
    }
    return w;
}

// Nearest point of 2 D8 + shift, and its distance.
float nearestShifted(const std::array<float, kDim>& x, int32_t shift, Point& y) {
    int32_t sum = 0;
    size_t worst = 0;
    float worstError = -1;
    float distance = 0;
    for (size_t i = 0; i < kDim; ++i) {
        const float half = (x[i] - static_cast<float>(shift)) * 0.5F;
        const auto z = static_cast<int32_t>(std::lrint(half));
        const float error = std::fabs(half - static_cast<float>(z));
        sum += z;
        y[i] = 2 * z + shift;
        distance += error * error;
        if (error > worstError) {
            worstError = error;
            worst = i;
        }
    }
    if (sum % 2 != 0) {
        const bool up = x[worst] > static_cast<float>(y[worst]);
        y[worst] += up ? 2 : -2;
        distance += 1 - 2 * worstError; // (1 - e)^2 - e^2
    }
    return distance;
}

} // namespace

Point nearest(const std::array<float, kDim>& x) {
    Point even;
    Point odd;
    const float distanceEven = nearestShifted(x, 0, even);
    const float distanceOdd = nearestShifted(x, 1, odd);
    return distanceEven <= distanceOdd ? even : odd;
}

bool encode(const Point& x, Code& code) {
    code = {};
    if (x == Point{}) {
        return true;
    }
    for (int number = 2; number <= 4; ++number) {
        if (findInBook(x, number, code.base)) {
            code.number = number;
            return true;
        }
    }
    const Point k = toBasis(x);
    for (int r = 1; extensionOf(kLargestNumber) >= r; ++r) {
        for (size_t i = 0; i < kDim; ++i) {
            code.extension[i] = k[i] & ((1 << r) - 1);
        }
        const Point v = region(code.extension, r);
        Point z;
        for (size_t i = 0; i < kDim; ++i) {
            z[i] = (x[i] - v[i]) / (1 << r);
        }
        for (int number = 3; number <= 4; ++number) {
            if (number + 2 * r <= kLargestNumber && findInBook(z, number, code.base)) {
                code.number = number + 2 * r;
                return true;
            }
        }
    }
    return false;
}

Point decode(const Code& code) {
    if (code.number == 0) {
        return {};
    }
    const int r = extensionOf(code.number);
    Point x = pointOfBook(code.base, code.number - 2 * r);
    if (r > 0) {
        const Point v = region(code.extension, r);
        for (size_t i = 0; i < kDim; ++i) {
            x[i] = x[i] * (1 << r) + v[i];
        }
    }
    return x;
}

} // namespace vek::lattice
