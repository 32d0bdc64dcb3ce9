// The three detectors of voice activity over scenes of all levels: what they remember, bit by bit, is what it was. A
// decision shows little of the steps that lead to it.
#include "checksum.h"
#include "kernellevels.h"
#include "samples.h"
#include "veksc.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

/// Frames in stretches of 5 to 60: noise, pulses of a period, rectangles and silence, from the faintest to full scale.
class Scene {
public:
    Samples next(int length) {
        if (m_left == 0) {
            m_left = pick(m_random, 5, 60);
            m_kind = pick(m_random, 0, 7);
            m_peak = (1 << pick(m_random, 0, 15)) - 1;
            m_period = pick(m_random, 2, 300);
        }
        --m_left;
        Samples x = noise(m_random, length, m_kind < 4 ? m_peak : m_peak / 16);
        for (int16_t& v : x) {
            m_phase = (m_phase + 1) % m_period;
            if (m_kind == 7) {
                v = 0;
            } else if (m_kind >= 4) {
                const bool high = m_kind == 6 ? 2 * m_phase < m_period : m_phase == 0;
                v = static_cast<int16_t>(high ? m_peak : m_kind == 6 ? -m_peak : v);
            }
        }
        return x;
    }
    /// A word of the kind that a frame's coder hands over.
    int16_t word(int low, int high) { return static_cast<int16_t>(pick(m_random, low, high)); }

private:
    std::mt19937 m_random{26094};
    int m_left = 0, m_kind = 0, m_peak = 0, m_period = 1, m_phase = 0;
};

constexpr int kFrames = 3000;

TEST(VekVoiceActivity, MemoriesOfOption1AreWhatTheyWere) {
    atEveryLevel([] {
        Scene scene;
        VeksVAD1State_GSMAMR s{};
        for (int i = 0; i < 9; ++i) {
            s.bckrEst[i] = s.aveLevel[i] = s.oldLevel[i] = 150;
        }
        s.corrHpFast = 13106;
        CheckSum sum;
        for (int f = 0; f < kFrames; ++f) {
            int16_t flag = 9;
            const int16_t correlation = scene.word(f / 300 % 2 == 0 ? 0 : 28000, 32767);
            ASSERT_EQ(0, veksVAD1_GSMAMR_16s(scene.next(200).data(), &s, &flag, correlation, scene.word(0, 1)));
            sum.add(flag);
            sum.add(s);
        }
        EXPECT_EQ(0x897c409712e42d2eU, sum.value());
    });
}

TEST(VekVoiceActivity, MemoriesOfOption2AreWhatTheyWere) {
    atEveryLevel([] {
        Scene scene;
        VeksVAD2State_GSMAMR s{};
        CheckSum sum;
        for (int f = 0; f < kFrames; ++f) {
            int16_t flag = 9;
            const int16_t strong = scene.word(0, 1);
            ASSERT_EQ(0, veksVAD2_GSMAMR_16s(scene.next(160).data(), &s, &flag, strong));
            sum.add(flag);
            sum.add(s);
        }
        EXPECT_EQ(0x0ecee04694f75449U, sum.value());
    });
}

std::vector<char> widebandMemory() {
    int size = 0;
    EXPECT_EQ(0, veksVADGetSize_AMRWB_16s(&size));
    std::vector<char> s(static_cast<size_t>(size));
    EXPECT_EQ(0, veksVADInit_AMRWB_16s(s.data()));
    return s;
}

TEST(VekVoiceActivity, MemoriesOfTheWidebandDetectorAreWhatTheyWere) {
    atEveryLevel([] {
        std::vector<char> s = widebandMemory();
        Scene scene;
        CheckSum sum;
        int16_t tone = 0;
        for (int f = 0; f < kFrames; ++f) {
            int16_t flag = 9;
            tone = static_cast<int16_t>(tone >> 1 | scene.word(0, 1) << 14);
            ASSERT_EQ(0, veksVAD_AMRWB_16s(scene.next(256).data(), s.data(), &tone, &flag));
            sum.add(tone);
            sum.add(flag);
            sum.add(s.data(), s.size());
        }
        EXPECT_EQ(0xcd531dd768702d8eU, sum.value());
    });
}

// After six seconds of noise frames of all levels about that of speech, each by itself: one has just that level.
TEST(VekVoiceActivity, MemoriesOfTheWidebandDetectorAfterAFrameAsLoudAsSpeechAreWhatTheyWere) {
    atEveryLevel([] {
        std::vector<char> before = widebandMemory();
        std::mt19937 random(7500);
        const auto step = [](const Samples& x, std::vector<char>& s) {
            int16_t tone = 0;
            int16_t flag = 0;
            ASSERT_EQ(0, veksVAD_AMRWB_16s(x.data(), s.data(), &tone, &flag));
        };
        for (int f = 0; f < 300; ++f) {
            step(noise(random, 256, 7500), before);
        }
        const Samples frame = noise(random, 256, 1000);
        CheckSum sum;
        for (int percent = 250; percent < 400; ++percent) {
            Samples x = frame;
            for (int16_t& v : x) {
                v = static_cast<int16_t>(v * percent / 100);
            }
            std::vector<char> s = before;
            step(x, s);
            sum.add(s.data(), s.size());
        }
        EXPECT_EQ(0x58ee6473ad3609d9U, sum.value());
    });
}

} // namespace
