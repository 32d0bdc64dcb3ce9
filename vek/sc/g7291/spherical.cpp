// Spherical vector quantiser of the transform coefficients: codebooks of signed arrangements of leaders.
// A codebook of b bits takes the leaders in the order of their norm, within a norm by descending elements, each as a
// whole where it still fits into 2^b points; leaders that are multiples of others point where these do and are left
// out.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "sc/common/arrangements.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "veksc_g7291.h"

using namespace vek;

namespace {

constexpr int kBands = 18;
constexpr int kWide = 16;
constexpr int kMostBits = 16;
constexpr int kMostLeaders = 32;

constexpr int bandSize(int band) {
    return band == kBands - 1 ? kWide / 2 : kWide;
}

struct Leader {
    std::array<int8_t, kWide> element; // descending, not negative
    Counts counts;                     // of the elements of the dimension
    int32_t first;                     // number of its first point
    int32_t points;
    int8_t signs; // elements that are not 0
    int norm;
    int64_t scale; // root of dimension over norm, Q13
};

struct Codebook {
    std::array<Leader, kMostLeaders> leader;
    int count;
};

struct Builder {
    int dim;
    int32_t room;
    int32_t used = 0;
    Codebook book{};

    void take(const std::array<int8_t, kWide>& element, int norm) {
        const int signs =
            static_cast<int>(std::count_if(element.begin(), element.end(), [](int8_t e) { return e > 0; }));
        const int divisor =
            std::accumulate(element.begin(), element.end(), 0, [](int a, int b) { return std::gcd(a, b); });
        Counts counts{};
        for (int i = 0; i < dim; ++i) {
            ++counts[static_cast<size_t>(element[static_cast<size_t>(i)])];
        }
        const int64_t points = arrangements(counts, static_cast<size_t>(dim)) << signs;
        if (divisor == 1 && points <= room - used && book.count < kMostLeaders) {
            const double scale = std::sqrt(static_cast<double>(dim) / norm);
            book.leader[static_cast<size_t>(book.count++)] = {element,
                                                              counts,
                                                              used,
                                                              static_cast<int32_t>(points),
                                                              static_cast<int8_t>(signs),
                                                              norm,
                                                              std::lround(8192 * scale)};
            used += static_cast<int32_t>(points);
        }
    }
    void walk(std::array<int8_t, kWide>& element, int at, int largest, int left, int norm) {
        if (left == 0) {
            take(element, norm);
        } else if (at < dim) {
            for (int e = largest; e > 0; --e) {
                if (e * e <= left && e * e * (dim - at) >= left) {
                    element[static_cast<size_t>(at)] = static_cast<int8_t>(e);
                    walk(element, at + 1, e, left - e * e, norm);
                    element[static_cast<size_t>(at)] = 0;
                }
            }
        }
    }
};

Codebook build(int dim, int bits) {
    constexpr int kLargestNorm = 40;
    Builder builder{.dim = dim, .room = 1 << bits};
    for (int norm = 1; norm <= kLargestNorm; ++norm) {
        std::array<int8_t, kWide> element{};
        builder.walk(element, 0, static_cast<int>(std::sqrt(norm)), norm, norm);
    }
    return builder.book;
}

using Codebooks = std::array<Codebook, kMostBits + 1>;

Codebooks buildAll(int dim) {
    Codebooks books;
    for (int bits = 0; bits <= kMostBits; ++bits) {
        books[static_cast<size_t>(bits)] = build(dim, bits);
    }
    return books;
}

// Made at first use: few programs that load the library code bands.
const Codebook& bookOf(int dim, int bits) {
    static const Codebooks wide = buildAll(kWide);
    static const Codebooks narrow = buildAll(kWide / 2);
    return (dim == kWide ? wide : narrow)[static_cast<size_t>(bits)];
}

// The leader whose best arrangement lies nearest in direction to the falling magnitudes.
const Leader& nearest(const Codebook& book, const int* magnitude) {
    const Leader* best = book.leader.data();
    int64_t square = -1;
    int64_t norm = 1;
    for (int c = 0; c < book.count; ++c) {
        const Leader& l = book.leader[static_cast<size_t>(c)];
        int64_t product = 0;
        for (int i = 0; i < l.signs; ++i) {
            product += l.element[static_cast<size_t>(i)] * magnitude[i];
        }
        if (product * product * norm > square * l.norm) {
            square = product * product;
            norm = l.norm;
            best = &l;
        }
    }
    return *best;
}

// Number of the point of a codebook that lies nearest in direction to y.
uint32_t encode(const Codebook& book, const Vek16s* y, int dim) {
    if (book.count == 0) {
        return 0;
    }
    int order[kWide];
    std::iota(order, order + dim, 0);
    std::stable_sort(order, order + dim, [y](int a, int b) { return std::abs(int{y[a]}) > std::abs(int{y[b]}); });
    int magnitude[kWide];
    for (int i = 0; i < dim; ++i) {
        magnitude[i] = std::abs(int{y[order[i]]});
    }
    const Leader& l = nearest(book, magnitude);
    int8_t x[kWide];
    for (int i = 0; i < dim; ++i) {
        x[order[i]] = l.element[static_cast<size_t>(i)];
    }
    uint32_t signs = 0;
    for (int i = 0; i < dim; ++i) {
        if (x[i] > 0) {
            signs = 2 * signs + (y[i] < 0 ? 1 : 0);
        }
    }
    const auto rank = static_cast<uint32_t>(rankOf(x, static_cast<size_t>(dim), l.counts));
    return static_cast<uint32_t>(l.first) + (rank << l.signs) + signs;
}

// The point of a number, scaled to 2^(envelope/2) per coefficient; a number without a point gives zeros.
void decode(const Codebook& book, uint32_t number, int envelope, Vek16s* y, int dim) {
    std::fill_n(y, dim, Vek16s{0});
    for (int c = 0; c < book.count; ++c) {
        const Leader& l = book.leader[static_cast<size_t>(c)];
        const int64_t inside = int64_t{number} - l.first;
        if (inside >= l.points) {
            continue;
        }
        int8_t x[kWide];
        arrangementOf(inside >> l.signs, l.counts, x, static_cast<size_t>(dim));
        // Q13 times Q14, the half step as the root of 2.
        const int64_t root = envelope % 2 != 0 ? 23170 : 16384;
        const int shift = 27 - (envelope - (envelope & 1)) / 2;
        int bit = l.signs;
        for (int i = 0; i < dim; ++i) {
            if (x[i] > 0) {
                const auto size = static_cast<int>((x[i] * l.scale * root + (int64_t{1} << (shift - 1))) >> shift);
                y[i] = fix::sat16((inside >> --bit & 1) != 0 ? -size : size);
            }
        }
        return;
    }
}

bool badBits(const Vek16s* bits) {
    return std::any_of(bits, bits + kBands, [](Vek16s b) { return b < 0 || b > kMostBits; });
}

} // namespace

VekStatus veksMDCTQuantFwd_G7291_16s32u(const Vek16s* pMDCTCoeffs, const Vek16s* pBitsNumber, Vek32u* pDst) {
    constexpr int kWords = 11;
    if (anyNull(pMDCTCoeffs, pBitsNumber, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badBits(pBitsNumber)) {
        return vekStsRangeErr;
    }
    std::fill_n(pDst, kWords, Vek32u{0});
    int at = 0;
    for (int band = 0; band < kBands; ++band) {
        const int bits = pBitsNumber[band];
        const uint32_t number = encode(bookOf(bandSize(band), bits), pMDCTCoeffs + kWide * band, bandSize(band));
        for (int b = bits - 1; b >= 0; --b, ++at) {
            pDst[at / 32] |= (number >> b & 1) << (31 - at % 32);
        }
    }
    return vekStsNoErr;
}

VekStatus veksMDCTQuantInv_G7291_32u16s(const Vek32u* pSrc, const Vek16s* pBitsNumber, const Vek16s* pQuantSpecEnv,
                                        Vek16s* pMDCTCoeffs) {
    constexpr int kCoefficients = 320;
    constexpr int kCoded = 280;
    constexpr int kLeastEnvelope = -11;
    constexpr int kMostEnvelope = 20;
    if (anyNull(pSrc, pBitsNumber, pQuantSpecEnv, pMDCTCoeffs)) {
        return vekStsNullPtrErr;
    }
    if (badBits(pBitsNumber)) {
        return vekStsRangeErr;
    }
    int at = 0;
    for (int band = 0; band < kBands; ++band) {
        const int bits = pBitsNumber[band];
        uint32_t number = 0;
        for (int b = 0; b < bits; ++b, ++at) {
            number = 2 * number + (pSrc[at / 32] >> (31 - at % 32) & 1);
        }
        const int envelope = std::clamp<int>(pQuantSpecEnv[band], kLeastEnvelope, kMostEnvelope);
        decode(bookOf(bandSize(band), bits), number, envelope, pMDCTCoeffs + kWide * band, bandSize(band));
    }
    std::fill(pMDCTCoeffs + kCoded, pMDCTCoeffs + kCoefficients, Vek16s{0});
    return vekStsNoErr;
}
