// Fixed codebooks of the real-time audio codec, and its band-pass filter.
#include "vkc.h"

#include <cmath>

namespace {

vkVector pSrcFixedTarget, pSrcImpulseResponse, pDstFixedVector, pDstFixedIndex, pSrcDst, pMem;
krStepIterator<int> subFrameSize, nStage, gainLimit, codebookSize, numPulses;
Vek32f pDstGain;

constexpr int longest = 320;

// A voice-like signal: harmonics of a pitch of 57 samples.
Vek32f voice(int i) {
    double sum = 0;
    for (int k = 1; k < 12; ++k) {
        sum += std::cos(0.1102 * k * i + k * k) / k;
    }
    return static_cast<Vek32f>(90 * sum);
}

// The response of a synthesis filter with one formant.
Vek32f response(int i) {
    return static_cast<Vek32f>(std::pow(0.88, i) * std::cos(0.55 * i));
}

class FCB_RTA_32f : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(subFrameSize, "subFrameSize");
        vkcFix(nStage, 0);
        vkcFix(gainLimit, 0);
        vkcFix(codebookSize, 64);
        vkcFix(numPulses, 5);
        initVectors({&pSrcFixedTarget, &pSrcImpulseResponse, &pDstFixedVector, &pSrcDst, &pMem}, vkArg::src);
        initVectors({&pDstFixedIndex}, vk32s); // an index is no floating number
        if (m_bandPass) {
            subFrameSize.set(80, longest, 80, '+');
            return walk({&subFrameSize});
        }
        subFrameSize.set(20, 80, 20, '+');
        if (m_random) {
            vkcRebuild(nStage, "nStage").set(0, 2, 1, '+');
            vkcRebuild(gainLimit, "gainLimit").set(0, 4, 1, '+');
            vkcRebuild(codebookSize, "codebookSize").setList({64, 160, 256});
            return walk({&subFrameSize, &nStage, &gainLimit, &codebookSize});
        }
        vkcRebuild(numPulses, "numPulses").set(5, 10, 5, '+');
        return walk({&subFrameSize, &numPulses});
    }

    bool makeData() override {
        if (!vkcCounts(subFrameSize, longest + 1)) {
            return false;
        }
        const int n = subFrameSize.value();
        if (m_bandPass) {
            return pSrcDst.createVector(n, setZero, 0, 0) && pMem.createVector(3, setZero, 0, 0) && setData();
        }
        const SetMode mode = m_random ? setZero : setRand;
        return pSrcFixedTarget.createVector(n, mode, -150, 150) &&
               pSrcImpulseResponse.createVector(n, mode, -150, 150) && pDstFixedVector.createVector(n, setZero, 0, 0) &&
               pDstFixedIndex.createVector(5, setZero, 0, 0) && setData();
    }

    double getDivisor() override { return subFrameSize.value(); }

private:
    // What the table leaves zero gets a signal.
    virtual bool setData() {
        const int n = subFrameSize.value();
        Vek32f signal[longest];
        Vek32f formant[longest];
        for (int i = 0; i < n; ++i) {
            signal[i] = voice(i);
            formant[i] = response(i);
        }
        if (m_bandPass) {
            return vkcDone(veksCopy_32f(signal, pSrcDst.m_32f, n));
        }
        return !m_random || (vkcDone(veksCopy_32f(signal, pSrcFixedTarget.m_32f, n)) &&
                             vkcDone(veksCopy_32f(formant, pSrcImpulseResponse.m_32f, n)));
    }

    const bool m_bandPass = m_func.contains("veksBandPassFilter_RTA_32f_I");
    const bool m_random = m_func.contains("veksFixedCodebookSearchRandom_RTA_32f");
};

} // namespace

VK_REG(FCB_RTA_32f, veksBandPassFilter_RTA_32f_I,
       veksBandPassFilter_RTA_32f_I(pSrcDst.m_32f, subFrameSize.value(), pMem.m_32f))
VK_REG(FCB_RTA_32f, veksFixedCodebookSearchRandom_RTA_32f,
       veksFixedCodebookSearchRandom_RTA_32f(pSrcFixedTarget.m_32f, pSrcImpulseResponse.m_32f, pDstFixedVector.m_32f,
                                             subFrameSize.value(), pDstFixedIndex.m_32s, &pDstGain,
                                             codebookSize.value(), nStage.value(), gainLimit.value()))
VK_REG(FCB_RTA_32f, veksFixedCodebookSearch_RTA_32f,
       veksFixedCodebookSearch_RTA_32f(pSrcFixedTarget.m_32f, pSrcImpulseResponse.m_32f, pDstFixedVector.m_32f,
                                       subFrameSize.value(), pDstFixedIndex.m_32s, &pDstGain, numPulses.value(), 0))
