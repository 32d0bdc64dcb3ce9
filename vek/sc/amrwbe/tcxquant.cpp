// Lattice quantiser of the transform-coded spectrum, and its multiplexer: eight lines at a time become a point of RE8,
// the points of a frame are spread over its packets.
#include <algorithm>
#include <array>
#include <cmath>

#include "sc/amrwbe/lattice.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwbe.h"

using namespace vek;
using namespace vek::lattice;

namespace {

constexpr int kLargestCount = 144;
constexpr int kLargestBudget = 1 << 16;
constexpr int kLargestPacket = 4096;
constexpr int kPackets = 4;
constexpr int kWord = 4; // bits of an element of a packet

constexpr int indexBits(int number) {
    return 4 * number;
}

// The packets of a frame: where each begins and ends, and how far it is filled. Positions count bits from the first.
struct Packets {
    int count = 0;
    std::array<int, kPackets> end{};
    std::array<int, kPackets> at{};

    VekStatus set(const int* bits, int packets) {
        if (packets < 1 || packets > kPackets) {
            return vekStsSizeErr;
        }
        count = packets;
        int word = 0;
        for (int p = 0; p < packets; ++p) {
            if (bits[p] < 0 || bits[p] > kLargestPacket) {
                return vekStsSizeErr;
            }
            const auto packet = static_cast<size_t>(p);
            at[packet] = word * kWord;
            end[packet] = at[packet] + bits[p];
            word += (bits[p] + kWord - 1) / kWord;
        }
        return vekStsNoErr;
    }
    int words() const { return (end[static_cast<size_t>(count - 1)] + kWord - 1) / kWord; }
    int room(size_t p) const { return end[p] - at[p]; }
};

// Calls visit(i, positions) for each point whose index has a place: in its own packet as long as that has room, then
// in what all packets have left.
template <class Visit>
void placeIndices(Packets& packets, const std::array<int, kLargestCount>& numbers, int count, bool spill,
                  const Visit& visit) {
    std::array<int, indexBits(kLargestNumber)> place;
    std::array<bool, kLargestCount> left{};
    for (int i = 0; i < count; ++i) {
        const int bits = indexBits(numbers[static_cast<size_t>(i)]);
        const auto p = static_cast<size_t>(i % packets.count);
        if (bits == 0) {
            continue;
        }
        if (packets.room(p) < bits) {
            left[static_cast<size_t>(i)] = true;
            continue;
        }
        for (int b = 0; b < bits; ++b) {
            place[static_cast<size_t>(b)] = packets.at[p]++;
        }
        visit(i, place);
    }
    size_t p = 0;
    const auto last = static_cast<size_t>(packets.count);
    for (int i = 0; spill && i < count; ++i) {
        if (!left[static_cast<size_t>(i)]) {
            continue;
        }
        const int bits = indexBits(numbers[static_cast<size_t>(i)]);
        int b = 0;
        while (b < bits && p < last) {
            if (packets.room(p) == 0) {
                ++p;
            } else {
                place[static_cast<size_t>(b++)] = packets.at[p]++;
            }
        }
        if (b == bits) {
            visit(i, place);
        }
    }
}

void putBit(Vek16s* words, int position, int bit) {
    words[position / kWord] = static_cast<Vek16s>(words[position / kWord] | bit << (kWord - 1 - position % kWord));
}

int getBit(const Vek16s* words, int position) {
    return words[position / kWord] >> (kWord - 1 - position % kWord) & 1;
}

std::array<float, kDim> divided(const Vek16s* x, float gain) {
    std::array<float, kDim> y;
    for (size_t i = 0; i < kDim; ++i) {
        y[i] = static_cast<float>(std::clamp<int>(x[i], -32760, 32760)) / gain;
    }
    return y;
}

// Bits of all points; none if all are the origin.
int quantise(const Vek16s* src, int count, float gain, std::array<Point, kLargestCount>& points) {
    int bits = 0;
    bool any = false;
    for (int i = 0; i < count; ++i) {
        Point& point = points[static_cast<size_t>(i)];
        point = nearest(divided(src + kDim * i, gain));
        Code code;
        if (!encode(point, code)) {
            return kLargestBudget + 1;
        }
        bits += bitsOf(code.number);
        any = any || code.number > 0;
    }
    return any ? bits : 0;
}

// The packets of so many points.
VekStatus layOut(const int* pNumBits, int nPackets, int count, Packets& packets) {
    return count < 1 || count > kLargestCount ? vekStsSizeErr : packets.set(pNumBits, nPackets);
}

// A gain at which the points need about the budget: an eighth of the energy of a vector twice the unit costs 5 bits.
float estimatedGain(const Vek16s* src, int count, int budget) {
    std::array<float, kLargestCount> halfLog;
    for (int i = 0; i < count; ++i) {
        float energy = 1;
        for (int k = 0; k < kDim; ++k) {
            const auto x = static_cast<float>(src[kDim * i + k]);
            energy += x * x;
        }
        halfLog[static_cast<size_t>(i)] = 5 * std::log2(energy / 8);
    }
    float offset = 0;
    for (const float step : {80.0F, 40.0F, 20.0F, 10.0F, 5.0F, 2.5F, 1.25F, 0.625F}) {
        float bits = 0;
        for (int i = 0; i < count; ++i) {
            bits += 1 + std::max(0.0F, halfLog[static_cast<size_t>(i)] - offset - step);
        }
        offset += bits > static_cast<float>(budget) ? step : 0;
    }
    return std::exp2(offset / 10);
}

} // namespace

VekStatus veksQuantTCX_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int count, int nBits, Vek16s* pNoiseFactor) {
    if (anyNull(pSrc, pDst, pNoiseFactor)) {
        return vekStsNullPtrErr;
    }
    if (count < 1 || count > kLargestCount) {
        return vekStsSizeErr;
    }
    if (nBits < 0 || nBits > kLargestBudget) {
        return vekStsRangeErr;
    }
    std::array<Point, kLargestCount> points;
    float gain = estimatedGain(pSrc, count, nBits);
    while (quantise(pSrc, count, gain, points) > nBits) {
        gain *= 1.05F;
    }
    double energy = 0;
    int lines = 0;
    for (int i = 0; i < count; ++i) {
        const Point& point = points[static_cast<size_t>(i)];
        if (point == Point{}) {
            for (const float x : divided(pSrc + kDim * i, gain)) {
                energy += static_cast<double>(x) * x;
            }
            lines += kDim;
        }
    }
    for (int i = 0; i < kDim * count; ++i) {
        pDst[i] = static_cast<Vek16s>(points[static_cast<size_t>(i / kDim)][static_cast<size_t>(i % kDim)]);
    }
    const double noise = lines > 0 ? std::sqrt(energy / lines) : 0;
    *pNoiseFactor = fix::sat16(static_cast<int32_t>(std::lround(32768 * noise)));
    return vekStsNoErr;
}

VekStatus veksEncodeMux_AMRWBE_16s(const Vek16s* pSrc, const int* pNumBits, int nPackets, Vek16s* pDst, int count) {
    if (anyNull(pSrc, pNumBits, pDst)) {
        return vekStsNullPtrErr;
    }
    Packets packets;
    if (const VekStatus status = layOut(pNumBits, nPackets, count, packets); status != vekStsNoErr) {
        return status;
    }
    std::array<Code, kLargestCount> codes;
    for (int i = 0; i < count; ++i) {
        Point point;
        for (size_t k = 0; k < kDim; ++k) {
            point[k] = pSrc[static_cast<size_t>(kDim * i) + k];
        }
        std::array<float, kDim> same;
        std::copy(point.begin(), point.end(), same.begin());
        if (nearest(same) != point || !encode(point, codes[static_cast<size_t>(i)])) {
            return vekStsRangeErr;
        }
    }
    std::fill_n(pDst, packets.words(), Vek16s{0});
    std::array<int, kLargestCount> numbers{};
    for (int i = 0; i < count; ++i) {
        const auto p = static_cast<size_t>(i % packets.count);
        const int number = codes[static_cast<size_t>(i)].number;
        const int length = std::max(number, 1);
        if (packets.room(p) >= length) {
            numbers[static_cast<size_t>(i)] = number;
            for (int b = 1; b < length; ++b) {
                putBit(pDst, packets.at[p]++, 1);
            }
            ++packets.at[p];
        } else {
            packets.at[p] += std::min(packets.room(p), 1);
        }
    }
    placeIndices(packets, numbers, count, true, [&](int i, const auto& place) {
        const Code& code = codes[static_cast<size_t>(i)];
        const int r = extensionOf(code.number);
        size_t at = 0;
        for (int b = indexBits(code.number - 2 * r) - 1; b >= 0; --b) {
            putBit(pDst, place[at++], code.base >> b & 1);
        }
        for (const int32_t e : code.extension) {
            for (int b = r - 1; b >= 0; --b) {
                putBit(pDst, place[at++], e >> b & 1);
            }
        }
    });
    return vekStsNoErr;
}

VekStatus veksDecodeDemux_AMRWBE_16s(const Vek16s* pSrc, const int* pNumBits, const int* pBfi, int nPackets,
                                     Vek16s* pDst, int count) {
    if (anyNull(pSrc, pNumBits, pBfi, pDst)) {
        return vekStsNullPtrErr;
    }
    Packets packets;
    if (const VekStatus status = layOut(pNumBits, nPackets, count, packets); status != vekStsNoErr) {
        return status;
    }
    const bool whole = std::all_of(pBfi, pBfi + nPackets, [](int bad) { return bad == 0; });
    std::array<int, kLargestCount> numbers{};
    for (int i = 0; i < count; ++i) {
        const auto p = static_cast<size_t>(i % packets.count);
        int length = 0;
        bool ended = false;
        while (pBfi[p] == 0 && !ended && packets.room(p) > 0) {
            ended = getBit(pSrc, packets.at[p]++) == 0;
            ++length;
        }
        // A number that the packet's end cuts off, or that no codebook has, is that of the origin.
        numbers[static_cast<size_t>(i)] = ended && length > 1 && length <= kLargestNumber ? length : 0;
    }
    std::fill_n(pDst, kDim * count, Vek16s{0});
    // What stands in foreign packets can only be found if all have come.
    placeIndices(packets, numbers, count, whole, [&](int i, const auto& place) {
        Code code{.number = numbers[static_cast<size_t>(i)], .base = 0, .extension = {}};
        const int r = extensionOf(code.number);
        size_t at = 0;
        for (int b = indexBits(code.number - 2 * r); b > 0; --b) {
            code.base = code.base << 1 | getBit(pSrc, place[at++]);
        }
        for (int32_t& e : code.extension) {
            for (int b = 0; b < r; ++b) {
                e = e << 1 | getBit(pSrc, place[at++]);
            }
        }
        const Point point = decode(code);
        for (size_t k = 0; k < kDim; ++k) {
            pDst[static_cast<size_t>(kDim * i) + k] = fix::sat16(point[k]);
        }
    });
    return vekStsNoErr;
}
