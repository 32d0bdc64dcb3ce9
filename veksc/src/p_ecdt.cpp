// Controllers of subband echo cancellers that tell double talk.
#include "vkc.h"

namespace {

constexpr int sampleFreq[] = {8000, 16000};
// The tail of the filter in milliseconds.
[[maybe_unused]] constexpr int taptime_ms = 16;
constexpr int FilterUpdateEnabled = 0;
constexpr int AdaptationEnabled = 0;
constexpr int PwrDelta = 0;

vkVector pSrcSinSubbands, pSrcFilterErr, pDstStepSize, pSrcAdaptiveFilterErr, pSrcFixedFilterErr;
vkrMatrice ppSrcRinSubbandsHistory, ppDstAdaptiveCoefs, ppDstFixedCoefs;
krStepIterator<int> startSubband, mode, doubleTalk;
int SUBBANDS, FRAME_SIZE, numSubbands, numSegments, isDT, disabledNLP, pDstStsAdapt;
Vek32s pSrcDstFilterPwr;
VeksSubbandControllerDTState_EC_16s* pState;

class TimECDT : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        SUBBANDS = 33;
        FRAME_SIZE = 16;
        numSubbands = SUBBANDS;
        vkcRebuild(startSubband, "startSubband").set(2, 3, 1, '+');
        vkcRebuild(mode, "mode").set(0, 1, 1, '+');
        vkcRebuild(doubleTalk, "doubleTalk").set(0, 1, 1, '+');
        initVectors({&pSrcSinSubbands, &pSrcFilterErr, &pSrcAdaptiveFilterErr, &pSrcFixedFilterErr}, vk32sc);
        for (vkrMatrice* matrix : {&ppSrcRinSubbandsHistory, &ppDstAdaptiveCoefs, &ppDstFixedCoefs}) {
            matrix->init(vk32sc);
        }
        initVectors({&pDstStepSize}, vk32s);
        return walk({&startSubband, &mode, &doubleTalk});
    }

    bool makeData() override {
        numSegments = mode.value() != 0 ? 4 : 2;
        pSrcDstFilterPwr = 0;
        const SetMode fill = doubleTalk.value() != 0 ? setRand : setValue;
        const bool made = m_func.contains("Update")
                              ? ppSrcRinSubbandsHistory.createMatrice(numSegments, numSubbands, setRand, -1.0, 1.0) &&
                                    pSrcSinSubbands.createVector(numSubbands, fill, 32767, 0) &&
                                    pSrcFilterErr.createVector(numSubbands, fill, 32767, 0) &&
                                    pDstStepSize.createVector(numSubbands, setZero, 0, 0)
                              : pSrcAdaptiveFilterErr.createVector(numSubbands, setValue, 4095, 0) &&
                                    pSrcFixedFilterErr.createVector(numSubbands, setValue, 4095, 0) &&
                                    ppDstAdaptiveCoefs.createMatrice(numSegments, numSubbands, setRand, -1.0, 1.0) &&
                                    ppDstFixedCoefs.createMatrice(numSegments, numSubbands, setRand, -1.0, 1.0);
        return made && makeState();
    }

    void flushData() override {
        for (vkrMatrice* matrix : {&ppDstFixedCoefs, &ppDstAdaptiveCoefs, &ppSrcRinSubbandsHistory}) {
            matrix->deleteMatrice();
        }
        vkcGridTest::flushData();
    }

    double getDivisor() override { return static_cast<double>(numSubbands) - startSubband.value(); }

private:
    bool makeState() {
        const int freq = sampleFreq[mode.value() != 0];
        int pSize = 0;
        veksSubbandControllerDTGetSize_EC_16s(numSubbands, FRAME_SIZE, 1, freq, &pSize);
        return hold(pState, krMalloc(pSize, 0, 0, nullptr), krFree) &&
               checkStatus(veksSubbandControllerDTInit_EC_16s(pState, numSubbands, FRAME_SIZE, numSegments, freq)) ==
                   krOk;
    }
};

} // namespace

VK_REG(TimECDT, veksSubbandControllerDTUpdate_EC_16s,
       veksSubbandControllerDTUpdate_EC_16s(ppSrcRinSubbandsHistory.m_r32sc, pSrcSinSubbands.m_32sc,
                                            pSrcFilterErr.m_32sc, pDstStepSize.m_32s, &isDT, &disabledNLP,
                                            startSubband.value(), pState))
VK_REG(TimECDT, veksSubbandControllerDT_EC_16s,
       veksSubbandControllerDT_EC_16s(pSrcAdaptiveFilterErr.m_32sc, pSrcFixedFilterErr.m_32sc,
                                      ppDstAdaptiveCoefs.m_r32sc, ppDstFixedCoefs.m_r32sc, &pSrcDstFilterPwr,
                                      &pDstStsAdapt, PwrDelta, FilterUpdateEnabled, AdaptationEnabled,
                                      startSubband.value(), pState))
