// Open-loop pitch of the wide-band codec, and of the extended one, whose lags follow its sampling rate.
#include "vkc.h"

#include <algorithm>
#include <iterator>

namespace nsTimOLPSWB {

vkVector pSrcWgtSpch, pSrcFltWgtSpch, pSrcDstPrevPitchLag, pSrcDstPrevPitchLagTst;
krStepIterator<int> len;
krStepIterator<int> itLagSwitcher;
Vek16s prevMidPitchLag, adaptiveParam, dstOpenLoopLag, toneFlag, dstOpenLoopGain, lagSwitcher;

constexpr int history = 115;
constexpr int lags = 5;

class TimOLPSWB : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(64, 128, 64, '+');
        vkcRebuild(itLagSwitcher, "lagSwitcher").set(0, 1, 1, '+');
        initVectors({&pSrcWgtSpch, &pSrcFltWgtSpch, &pSrcDstPrevPitchLag, &pSrcDstPrevPitchLagTst}, vkArg::src);
        return walk({&len, &itLagSwitcher});
    }

    bool makeData() override {
        adaptiveParam = 32767;
        toneFlag = 0;
        const long long read = history + vkcSize(len);
        return pSrcWgtSpch.createVector(std::max(371LL, read), setRand, -4096, 4096) &&
               pSrcFltWgtSpch.createVector(std::max(243LL, read), setRand, -4096, 4096) &&
               vkcCreate({&pSrcDstPrevPitchLag, &pSrcDstPrevPitchLagTst}, lags, setValue, 40, 0);
    }

    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
};

// The median and the switch begin anew with each call; the lags that the search leaves are kept beside.
void restore() {
    prevMidPitchLag = 40;
    lagSwitcher = static_cast<Vek16s>(itLagSwitcher.value());
    vkcRestore(pSrcDstPrevPitchLag.m_16s, pSrcDstPrevPitchLagTst.m_16s, lags * vkVector::item("_16s"));
}

} // namespace nsTimOLPSWB

namespace nsTimOLPSWBE_ld {

vkVector pSrcWgtSpch, pSrcFltWgtSpch, pSrcDstPrevPitchLag, pSrcDstPrevPitchLagTst;
krStepIterator<int> itCntFreqScale;
krStepIterator<int> itLagSwitcher;
Vek16s prevMidPitchLag, adaptiveParam, dstOpenLoopLag, toneFlag, dstOpenLoopGain, lagSwitcher;
int minPitLag;
int maxPitLag;

constexpr int scaleFreq[] = {0, 48, 54, 60, 64, 72, 80, 90, 96, 108, 120, 128, 135, 144};
constexpr int subframeLength = 64;
constexpr int lags = 5;
// The longest lag of the fastest rate, at half of it.
constexpr int maxSize = 166;

class krTimOLPSWBE : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(itCntFreqScale, "freqScaleCounter").set(0, 13, 1, '+');
        vkcRebuild(itLagSwitcher, "lagSwitcher").set(0, 1, 1, '+');
        initVectors({&pSrcWgtSpch, &pSrcFltWgtSpch, &pSrcDstPrevPitchLag, &pSrcDstPrevPitchLagTst}, vkArg::src);
        return walk({&itCntFreqScale, &itLagSwitcher});
    }

    bool makeData() override {
        if (!vkcCounts(itCntFreqScale, std::size(scaleFreq))) {
            return false;
        }
        adaptiveParam = 32767;
        toneFlag = 0;
        // A scale of 0 is the rate of the narrower codec, 96/96.
        const int scale = scaleFreq[itCntFreqScale.value()] == 0 ? 96 : scaleFreq[itCntFreqScale.value()];
        const int longer = (scale * 34 + 48) / 96 - 34;
        minPitLag = (34 + longer) / 2;
        maxPitLag = (231 + 6 * longer) / 2;
        const int size = maxSize + subframeLength;
        return pSrcWgtSpch.createVector(size, setRand, -4096, 4096) &&
               pSrcFltWgtSpch.createVector(size, setRand, -4096, 4096) &&
               vkcCreate({&pSrcDstPrevPitchLag, &pSrcDstPrevPitchLagTst}, lags, setValue, 40, 0);
    }

    double getDivisor() override { return subframeLength; }
    double getDivisor_el() override { return getDivisor(); }
};

void restore() {
    prevMidPitchLag = 40;
    lagSwitcher = static_cast<Vek16s>(itLagSwitcher.value());
    vkcRestore(pSrcDstPrevPitchLag.m_16s, pSrcDstPrevPitchLagTst.m_16s, lags * vkVector::item("_16s"));
}

} // namespace nsTimOLPSWBE_ld

using nsTimOLPSWB::TimOLPSWB;
using nsTimOLPSWBE_ld::krTimOLPSWBE;

VK_REG_I(TimOLPSWB, veksOpenLoopPitchSearch_AMRWB_16s,
         veksOpenLoopPitchSearch_AMRWB_16s(nsTimOLPSWB::pSrcWgtSpch.m_16s + nsTimOLPSWB::history,
                                           nsTimOLPSWB::pSrcFltWgtSpch.m_16s + nsTimOLPSWB::history,
                                           &nsTimOLPSWB::prevMidPitchLag, &nsTimOLPSWB::adaptiveParam,
                                           &nsTimOLPSWB::dstOpenLoopLag, &nsTimOLPSWB::toneFlag,
                                           &nsTimOLPSWB::dstOpenLoopGain, nsTimOLPSWB::pSrcDstPrevPitchLagTst.m_16s,
                                           &nsTimOLPSWB::lagSwitcher, nsTimOLPSWB::len.value()),
         nsTimOLPSWB::restore())
VK_REG_I(krTimOLPSWBE, veksOpenLoopPitchSearch_AMRWBE_16s,
         veksOpenLoopPitchSearch_AMRWBE_16s(
             nsTimOLPSWBE_ld::maxSize + nsTimOLPSWBE_ld::pSrcWgtSpch.m_16s,
             nsTimOLPSWBE_ld::pSrcFltWgtSpch.m_16s + nsTimOLPSWBE_ld::maxSize, &nsTimOLPSWBE_ld::prevMidPitchLag,
             &nsTimOLPSWBE_ld::adaptiveParam, &nsTimOLPSWBE_ld::dstOpenLoopLag, &nsTimOLPSWBE_ld::toneFlag,
             &nsTimOLPSWBE_ld::dstOpenLoopGain, nsTimOLPSWBE_ld::pSrcDstPrevPitchLagTst.m_16s,
             &nsTimOLPSWBE_ld::lagSwitcher, 64, nsTimOLPSWBE_ld::minPitLag, nsTimOLPSWBE_ld::maxPitLag),
         nsTimOLPSWBE_ld::restore())
