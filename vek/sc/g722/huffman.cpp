// Quantisation and entropy coding of a region of 20 MLT coefficients of G.722.1.
#include "sc/g722/huffman.h"

#include <algorithm>
#include <cstdlib>

#include "sc/common/signal_check.h"
#include "veksc_g722.h"

using namespace vek;

namespace {

constexpr int kRegion = 20;
constexpr int kMostDimension = 5;
constexpr int kWords = 4;
constexpr int kMostWords = 6; // of the dearest region that the tables allow
constexpr int kUncoded = 7;
constexpr int kLeastIndex = -8;
constexpr int kMostIndex = 31;

// What is added before a coefficient in steps is cut to a whole number, by category, Q15: 0.3, 0.33 ... 0.5.
constexpr int kRounding[] = {9830, 10813, 11796, 12780, 13763, 14746, 16384};

// Code words one behind the other, from the highest bit of the first word on.
class Packer {
public:
    void put(uint32_t code, int bits) {
        for (int room = 32 - m_bits % 32; bits > room; room = 32) {
            bits -= room;
            m_words[m_bits / 32] |= code >> bits;
            code &= (1U << bits) - 1;
            m_bits += room;
        }
        m_words[m_bits / 32] |= code << (32 - m_bits % 32 - bits);
        m_bits += bits;
    }
    int bits() const { return m_bits; }
    const Vek32u* words() const { return m_words; }

private:
    Vek32u m_words[kMostWords] = {};
    int m_bits = 0;
};

// The number of a vector with a word. Where it has none the largest component goes down.
int numberOf(const g722::HuffmanCategory& book, int* levels) {
    for (;;) {
        int number = 0;
        for (int j = 0; j < book.dimension; ++j) {
            number = number * (book.largest + 1) + levels[j];
        }
        if (book.words[number].bits != 0) {
            return number;
        }
        --*std::max_element(levels, levels + book.dimension);
    }
}

} // namespace

VekStatus veksHuffmanEncode_G722_16s32u(int category, int qntAmpEnvIndex, const Vek16s* pSrcMLTCoeffs, Vek32u* pDstCode,
                                        int* pCodeLength) {
    if (anyNull(pSrcMLTCoeffs, pDstCode, pCodeLength)) {
        return vekStsNullPtrErr;
    }
    if (category < 0 || category > kUncoded || qntAmpEnvIndex < kLeastIndex || qntAmpEnvIndex > kMostIndex) {
        return vekStsRangeErr;
    }
    Packer packer;
    if (category != kUncoded) {
        const g722::HuffmanCategory& book = g722::kHuffman[category];
        // A step is 2^((category + index - 3) / 2).
        const int power = category + qntAmpEnvIndex - 3;
        const int64_t mantissa = power % 2 == 0 ? 32768 : 23170;
        const int shift = power >= 0 ? power / 2 : (power - 1) / 2;
        for (int first = 0; first < kRegion; first += book.dimension) {
            int levels[kMostDimension] = {};
            for (int j = 0; j < book.dimension; ++j) {
                const int64_t scaled = std::abs(pSrcMLTCoeffs[first + j]) * mantissa;
                const int64_t steps = shift >= 0 ? scaled >> shift : scaled << -shift;
                levels[j] = static_cast<int>(std::min<int64_t>((steps + kRounding[category]) >> 15, book.largest));
            }
            const g722::HuffmanWord& word = book.words[numberOf(book, levels)];
            packer.put(word.code, word.bits);
            for (int j = 0; j < book.dimension; ++j) {
                if (levels[j] != 0) {
                    packer.put(pSrcMLTCoeffs[first + j] > 0 ? 1U : 0U, 1);
                }
            }
        }
    }
    if (packer.bits() > 32 * kWords) {
        return vekStsOutOfRangeErr;
    }
    std::copy_n(packer.words(), kWords, pDstCode);
    *pCodeLength = packer.bits();
    return vekStsNoErr;
}
