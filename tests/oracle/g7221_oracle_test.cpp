// The words of G.722.1's regions beside an open decoder: from whole frames, of which the library's function coded the
// regions, the decoder makes the levels that went in. Nothing here knows the words themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <numbers>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kernellevels.h"
#include "open_decoder.h"
#include "veksc.h"

namespace {

#ifdef ORACLE_AVCODEC

constexpr int kFrame = 320;
constexpr int kRegions = 14;
constexpr int kRegion = 20;
constexpr int kControls = 16;
constexpr int kUncoded = 7;

using Vector = std::vector<int>;

// Of each category with words: how many coefficients a word holds, how many of their vectors have one, and the
// decoder's magnitudes, in units of the region's level.
struct Category {
    int dimension;
    size_t words;
    std::vector<double> magnitudes;
};
const Category kCategories[kUncoded] = {
    {2, 181, {0, 0.392, 0.761, 1.120, 1.477, 1.832, 2.183, 2.541, 2.893, 3.245, 3.598, 3.942, 4.288, 4.724}},
    {2, 94, {0, 0.544, 1.060, 1.563, 2.068, 2.571, 3.072, 3.562, 4.070, 4.620}},
    {2, 48, {0, 0.746, 1.464, 2.180, 2.882, 3.584, 4.316}},
    {4, 520, {0, 1.006, 2.000, 2.993, 3.985}},
    {4, 209, {0, 1.321, 2.703, 3.983}},
    {5, 192, {0, 1.657, 3.491}},
    {5, 32, {0, 1.964}},
};
// The bits that a region of the category is reckoned to need.
constexpr int kExpectedBits[] = {52, 47, 43, 37, 29, 22, 16, 0};

// The words of the envelope by which region 1, 2 ... 13 has the level of the one before.
constexpr std::pair<uint32_t, int> kSameLevel[kRegions - 1] = {{5, 3}, {3, 4}, {4, 3}, {3, 3}, {0, 3}, {2, 3}, {3, 2},
                                                               {3, 2}, {2, 3}, {3, 3}, {3, 2}, {3, 2}, {2, 2}};

// Levels of which every category can be had, and no step of the coder is less than 2.
constexpr int kLeastLevel = 5;
constexpr int kMostLevel = 17;

// 16 kbit/s, and frames in which the other categories come.
constexpr int kSizes[] = {20, 40, 60, 80, 92};

// Bits, the highest of a byte first; ones fill a frame up.
class Bits {
public:
    void put(uint32_t value, int count) {
        for (int bit = count - 1; bit >= 0; --bit) {
            m_bits.push_back((value >> bit & 1) != 0);
        }
    }
    int count() const { return static_cast<int>(m_bits.size()); }
    std::vector<uint8_t> bytes(int size) const {
        std::vector<uint8_t> filled(static_cast<size_t>(size), 0xFF);
        for (size_t i = 0; i < m_bits.size(); ++i) {
            if (!m_bits[i]) {
                filled.at(i / 8) &= static_cast<uint8_t>(~(0x80 >> i % 8));
            }
        }
        return filled;
    }

private:
    std::vector<bool> m_bits;
};

struct Frame {
    int level;
    std::array<int, kRegions> categories;
    Vector coefficients; // quantised, with signs
    std::vector<uint8_t> bytes;
};

// G.722.1 3.4 for regions of one level: the categories that so many bits bring, and so many steps of the rate control
// from the dearest on.
std::array<int, kRegions> categoriesOf(int available, int control) {
    int category = 0;
    while (category < kUncoded && kRegions * kExpectedBits[category + 1] >= available - 32) {
        ++category;
    }
    std::array<int, kRegions> dearest;
    dearest.fill(category);
    std::array<int, kRegions> cheapest = dearest;
    int most = kRegions * kExpectedBits[category];
    int least = most;
    std::deque<size_t> steps; // the regions that step down, from the dearest to the cheapest
    while (steps.size() < kControls - 1) {
        if (most + least <= 2 * available) {
            const auto first = std::max_element(dearest.begin(), dearest.end());
            most += kExpectedBits[*first - 1] - kExpectedBits[*first];
            --*first;
            steps.push_front(static_cast<size_t>(first - dearest.begin()));
        } else {
            const auto last = std::min_element(cheapest.rbegin(), cheapest.rend());
            least += kExpectedBits[*last + 1] - kExpectedBits[*last];
            ++*last;
            steps.push_back(static_cast<size_t>(cheapest.rend() - last - 1));
        }
    }
    for (int i = 0; i < control; ++i) {
        ++dearest[steps[static_cast<size_t>(i)]];
    }
    return dearest;
}

// A region as the library codes it.
struct Code {
    Vek32u words[4] = {};
    int bits = 0;

    // False where the region is too dear.
    bool make(int category, int level, const int* coefficients) {
        const double step = std::pow(2.0, (category + level - 3) / 2.0);
        Vek16s x[kRegion];
        for (int i = 0; i < kRegion; ++i) {
            x[i] = static_cast<Vek16s>(std::lround(coefficients[i] * step));
        }
        const VekStatus status = veksHuffmanEncode_G722_16s32u(category, level, x, words, &bits);
        EXPECT_TRUE(status == vekStsNoErr || status == vekStsOutOfRangeErr) << status;
        return status == vekStsNoErr;
    }
};

// Makes frames until all vectors of all categories have been in one.
class Coder {
public:
    Coder() {
        for (size_t c = 0; c < kUncoded; ++c) {
            const auto count = static_cast<int>(kCategories[c].magnitudes.size());
            const double vectors = std::pow(count, kCategories[c].dimension);
            for (int number = 0; number < vectors; ++number) {
                Vector v;
                for (int rest = number, j = 0; j < kCategories[c].dimension; ++j, rest /= count) {
                    v.push_back(m_random() % 2 == 0 ? rest % count : -(rest % count));
                }
                m_waiting[c].push_back(v);
            }
        }
    }

    bool done() const {
        return std::all_of(m_waiting.begin(), m_waiting.end(), [](const auto& vectors) { return vectors.empty(); });
    }

    Frame frame(int size, int control, int level) {
        Bits bits;
        bits.put(static_cast<uint32_t>(level + 7), 5);
        for (const auto& [word, length] : kSameLevel) {
            bits.put(word, length);
        }
        bits.put(static_cast<uint32_t>(control), 4);
        int room = 8 * size - bits.count();
        Frame f{level, categoriesOf(room, control), Vector(kRegions * kRegion), {}};
        std::array<Code, kRegions> codes;
        for (size_t r = 0; r < kRegions; ++r) {
            EXPECT_TRUE(codes[r].make(f.categories[r], level, &f.coefficients[r * kRegion]));
            room -= codes[r].bits;
        }
        for (size_t r = 0; r < kRegions; ++r) {
            if (f.categories[r] != kUncoded) {
                fill(f, r, codes[r], room);
            }
            for (int at = 0; at < codes[r].bits; ++at) {
                bits.put(codes[r].words[at / 32] >> (31 - at % 32) & 1, 1);
            }
        }
        f.bytes = bits.bytes(size);
        return f;
    }

private:
    // As many of the waiting vectors as there is room for, in place of zeros.
    void fill(Frame& f, size_t region, Code& code, int& room) {
        const int category = f.categories[region];
        std::vector<Vector>& waiting = m_waiting[static_cast<size_t>(category)];
        int* const coefficients = &f.coefficients[region * kRegion];
        for (int at = 0; at < kRegion && !waiting.empty(); at += kCategories[category].dimension) {
            const Vector& v = waiting.back();
            std::copy(v.begin(), v.end(), coefficients + at);
            Code longer;
            if (!longer.make(category, f.level, coefficients) || longer.bits - code.bits > room) {
                std::fill_n(coefficients + at, v.size(), 0);
                return;
            }
            room -= longer.bits - code.bits;
            code = longer;
            waiting.pop_back();
        }
    }

    std::mt19937 m_random{7221};
    std::array<std::vector<Vector>, kUncoded> m_waiting;
};

// The coefficients of which two frames of samples hold the overlapping halves, by an orthogonal transform: the
// decoder's basis is the sine of the phase of which the recommendation has the cosine.
std::vector<double> lapped(const float* samples) {
    static const std::vector<double> sine = [] {
        std::vector<double> s;
        for (int i = 0; i < 8 * kFrame; ++i) {
            s.push_back(std::sin(std::numbers::pi / (4 * kFrame) * i));
        }
        return s;
    }();
    double folded[kFrame] = {};
    for (int n = 0; n < 2 * kFrame; ++n) {
        const double windowed = samples[n] * sine[static_cast<size_t>(2 * n + 1)];
        const int at = n - kFrame / 2;
        if (at < 0) {
            folded[-1 - at] -= windowed;
        } else {
            folded[at < kFrame ? at : 2 * kFrame - 1 - at] += windowed;
        }
    }
    std::vector<double> coefficients;
    for (int m = 0; m < kRegions * kRegion; ++m) {
        double sum = 0;
        for (int i = 0; i < kFrame; ++i) {
            sum += folded[i] * sine[static_cast<size_t>((2 * i + 1) * (2 * m + 1) % (8 * kFrame))];
        }
        coefficients.push_back(-2.0 * 32768 / kFrame * sum);
    }
    return coefficients;
}

// A quantised coefficient from a decoded one in units of its region's level.
int quantised(int category, double value) {
    const std::vector<double>& magnitudes = kCategories[category].magnitudes;
    const auto nearest = std::min_element(magnitudes.begin(), magnitudes.end(), [value](double a, double b) {
        return std::abs(std::abs(value) - a) < std::abs(std::abs(value) - b);
    });
    // Categories 5 and 6 have noise where nothing was coded.
    const bool noise = category >= 5 && nearest == magnitudes.begin();
    EXPECT_NEAR(std::abs(value), *nearest, noise ? 0.7072 : 1e-4);
    const auto steps = static_cast<int>(nearest - magnitudes.begin());
    return value < 0 ? -steps : steps;
}

Vector magnitudesOf(Vector v) {
    std::transform(v.begin(), v.end(), v.begin(), [](int level) { return std::abs(level); });
    return v;
}

TEST(G7221Oracle, DecoderReadsEachWordOfAllCategories) {
    kernellevels::onceIsEnough();
    OpenDecoder decoder(AV_CODEC_ID_SIREN, 16000);
    if (!decoder.open()) {
        GTEST_SKIP() << "libavcodec has no decoder of this kind";
    }
    Coder coder;
    std::vector<Frame> frames;
    while (!coder.done() && frames.size() < 2000) {
        const auto count = static_cast<int>(frames.size());
        const int level = kLeastLevel + count % (kMostLevel - kLeastLevel + 1);
        frames.push_back(coder.frame(kSizes[count / kControls % 5], count % kControls, level));
    }
    ASSERT_TRUE(coder.done());
    frames.push_back(frames.back()); // whose samples end the frame before it

    std::vector<float> samples;
    for (const Frame& f : frames) {
        const std::vector<float> decoded = decoder.samples<float>(f.bytes.data(), f.bytes.size());
        ASSERT_EQ(decoded.size(), static_cast<size_t>(kFrame)) << "frame " << samples.size() / kFrame;
        samples.insert(samples.end(), decoded.begin(), decoded.end());
    }
    frames.pop_back();

    std::array<std::set<Vector>, kUncoded> read;
    std::array<std::vector<std::pair<Vector, Vector>>, kUncoded> changed;
    for (size_t i = 0; i < frames.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        const Frame& f = frames[i];
        const std::vector<double> coefficients = lapped(&samples[i * kFrame]);
        for (size_t at = 0; at < coefficients.size();) {
            const int category = f.categories[at / kRegion];
            if (category == kUncoded) {
                at += kRegion;
                continue;
            }
            Vector sent;
            Vector got;
            for (int j = 0; j < kCategories[category].dimension; ++j, ++at) {
                sent.push_back(f.coefficients[at]);
                got.push_back(quantised(category, coefficients[at] * std::pow(2.0, -f.level / 2.0)));
            }
            const auto c = static_cast<size_t>(category);
            if (got == sent) {
                read[c].insert(magnitudesOf(sent));
            } else {
                changed[c].emplace_back(sent, got);
            }
        }
        ASSERT_FALSE(HasFailure());
    }
    for (size_t c = 0; c < kUncoded; ++c) {
        SCOPED_TRACE("category " + std::to_string(c));
        EXPECT_EQ(read[c].size(), kCategories[c].words);
        // A vector without a word has the one that its largest component makes when it goes down.
        for (auto [vector, got] : changed[c]) {
            while (!read[c].contains(magnitudesOf(vector))) {
                int& largest = *std::max_element(vector.begin(), vector.end(),
                                                 [](int a, int b) { return std::abs(a) < std::abs(b); });
                ASSERT_NE(largest, 0);
                largest -= largest > 0 ? 1 : -1;
            }
            ASSERT_EQ(got, vector);
        }
    }
}

#else

TEST(G7221Oracle, DecoderReadsEachWordOfAllCategories) {
    GTEST_SKIP() << "libavcodec-dev is not installed";
}

#endif

} // namespace
