// Open-loop pitch of the wide-band codec, and of the extended one, whose lags follow its sampling rate.
#include "vkc.h"

#include <algorithm>
#include <iterator>

namespace {

vkVector pSrcWgtSpch, pSrcFltWgtSpch, pSrcDstPrevPitchLag, pSrcDstPrevPitchLagTst;
krStepIterator<int> len, itCntFreqScale, itLagSwitcher;
Vek16s prevMidPitchLag, adaptiveParam, dstOpenLoopLag, toneFlag, dstOpenLoopGain, lagSwitcher;
int minPitLag, maxPitLag;

constexpr int history = 115;
constexpr int scaleFreq[] = {0, 48, 54, 60, 64, 72, 80, 90, 96, 108, 120, 128, 135, 144};
constexpr int subframeLength = 64;
constexpr int lags = 5;
// The longest lag of the fastest rate, at half of it.
constexpr int maxSize = 166;

// What both codecs share.
class OpenLoopPitch : public vkcTest {
public:
    using vkcTest::vkcTest;

    double getDivisor_el() override { return getDivisor(); }

protected:
    bool start(krStepIterator<int>& outer) {
        vkcRebuild(itLagSwitcher, "lagSwitcher").set(0, 1, 1, '+');
        initVectors({&pSrcWgtSpch, &pSrcFltWgtSpch, &pSrcDstPrevPitchLag, &pSrcDstPrevPitchLagTst}, vkArg::src);
        return walk({&outer, &itLagSwitcher});
    }

    bool makeSpeech(long long weighted, long long filtered) {
        adaptiveParam = 32767;
        toneFlag = 0;
        return pSrcWgtSpch.createVector(weighted, setRand, -4096, 4096) &&
               pSrcFltWgtSpch.createVector(filtered, setRand, -4096, 4096) &&
               vkcCreate({&pSrcDstPrevPitchLag, &pSrcDstPrevPitchLagTst}, lags, setValue, 40, 0);
    }
};

class TimOLPSWB : public OpenLoopPitch {
public:
    using OpenLoopPitch::OpenLoopPitch;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(64, 128, 64, '+');
        return start(len);
    }

    bool makeData() override {
        const long long read = history + vkcSize(len);
        return makeSpeech(std::max(371LL, read), std::max(243LL, read));
    }

    double getDivisor() override { return len.value(); }
};

class krTimOLPSWBE : public OpenLoopPitch {
public:
    using OpenLoopPitch::OpenLoopPitch;

    bool canStart() override {
        vkcRebuild(itCntFreqScale, "freqScaleCounter").set(0, 13, 1, '+');
        return start(itCntFreqScale);
    }

    bool makeData() override {
        if (!vkcCounts(itCntFreqScale, std::size(scaleFreq))) {
            return false;
        }
        // A scale of 0 is the rate of the narrower codec, 96/96.
        const int scale = scaleFreq[itCntFreqScale.value()] == 0 ? 96 : scaleFreq[itCntFreqScale.value()];
        const int longer = (scale * 34 + 48) / 96 - 34;
        minPitLag = (34 + longer) / 2;
        maxPitLag = (231 + 6 * longer) / 2;
        return makeSpeech(maxSize + subframeLength, maxSize + subframeLength);
    }

    double getDivisor() override { return subframeLength; }
};

// The median and the switch begin anew with each call; the lags that the search leaves are kept beside.
void restore() {
    prevMidPitchLag = 40;
    lagSwitcher = static_cast<Vek16s>(itLagSwitcher.value());
    vkcRestore(pSrcDstPrevPitchLag.m_16s, pSrcDstPrevPitchLagTst.m_16s, lags * vkVector::item("_16s"));
}

} // namespace

VK_REG_I(TimOLPSWB, veksOpenLoopPitchSearch_AMRWB_16s,
         veksOpenLoopPitchSearch_AMRWB_16s(pSrcWgtSpch.m_16s + history, pSrcFltWgtSpch.m_16s + history,
                                           &prevMidPitchLag, &adaptiveParam, &dstOpenLoopLag, &toneFlag,
                                           &dstOpenLoopGain, pSrcDstPrevPitchLagTst.m_16s, &lagSwitcher, len.value()),
         restore())
VK_REG_I(krTimOLPSWBE, veksOpenLoopPitchSearch_AMRWBE_16s,
         veksOpenLoopPitchSearch_AMRWBE_16s(maxSize + pSrcWgtSpch.m_16s, pSrcFltWgtSpch.m_16s + maxSize,
                                            &prevMidPitchLag, &adaptiveParam, &dstOpenLoopLag, &toneFlag,
                                            &dstOpenLoopGain, pSrcDstPrevPitchLagTst.m_16s, &lagSwitcher,
                                            subframeLength, minPitLag, maxPitLag),
         restore())
