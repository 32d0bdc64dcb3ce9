// Echo cancellation: filter and NLMS, tone detection, controllers, subband analysis and synthesis.
#include "vkc.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int sampleFreq[] = {8000, 16000};
// The tail of the filter in seconds and the length of the transform that the figures below stand for.
[[maybe_unused]] constexpr double taptime = 0.096;
[[maybe_unused]] constexpr int fft_len = 64;

vkVector pSubbands, pSignal, pWindow, pInitBuf, pBuf, pSrcRin, pSrcSin, pSrcSinSubbands, pSrcAdaptiveFilterErr,
    pSrcFixedFilterErr, pDstStepSize, pDstStepSizeI, pAdaptiveFilterErr, pFixedFilterErr, pAdaptiveCoefs, pFixedCoefs,
    pSrcSpchRef, pSrcSpch, pDstSpch, pSrcCoef, pStepSize, pSrcDstCoef;
vkrMatrice ppSrcRinSubbandsHistory, ppDstAdaptiveCoefs, ppDstFixedCoefs;
krStepIterator<int> len, tapLen, mode, numSubbands;
vkcScaleIterator scaleFactor;
int framesize = 44;
int ftt_order = 6;
int window_len = 256;
int fft_size, numSegments, pResult;
Vek32f pSGain;
Vek16s pSGain_16s;
Vek32f pDstSGain;
Vek16s pDstSGain_16s;
Vek32f pErr;
Vek16s pErr_16s;
VeksToneDetectState_EC_32f* pStateTD;
VeksFullbandControllerState_EC_32f* pStateFC;
VeksSubbandControllerState_EC_32f* pStateSC;
VeksSubbandProcessState_32f* pStateSP;
VeksToneDetectState_EC_16s* pStateTDI;
VeksFullbandControllerState_EC_16s* pStateFCI;
VeksSubbandControllerState_EC_16s* pStateSCI;
VeksSubbandProcessState_16s* pStateSPI;

const auto vectors = {&pSubbands,
                      &pSignal,
                      &pWindow,
                      &pInitBuf,
                      &pBuf,
                      &pSrcRin,
                      &pSrcSin,
                      &pDstStepSize,
                      &pDstStepSizeI,
                      &pSrcSinSubbands,
                      &pSrcFixedFilterErr,
                      &pFixedFilterErr,
                      &pFixedCoefs,
                      &pAdaptiveCoefs,
                      &pSrcAdaptiveFilterErr,
                      &pSrcSpchRef,
                      &pSrcSpch,
                      &pDstSpch,
                      &pSrcCoef,
                      &pStepSize,
                      &pSrcDstCoef,
                      &pAdaptiveFilterErr};
const auto matrices = {&ppSrcRinSubbandsHistory, &ppDstAdaptiveCoefs, &ppDstFixedCoefs};

class TimEC : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        framesize = m_process ? (m_fixed ? 16 : 24) : 64;
        ftt_order = m_process && !m_fixed ? 5 : 6;
        window_len = m_process && m_fixed ? 64 : 128;
        fft_size = 0;
        vkcFix(len, 8);
        vkcFix(tapLen, 8);
        vkcFix(mode, 0);
        vkcFix(numSubbands, 65);
        vkcScales(scaleFactor, "scaleFactor", m_func, 0, 1);
        if (m_nlms || m_fir || m_fullband) {
            vkcRebuild(len, "len").setList({8});
            vkcRebuild(tapLen, "tapLen");
            if (m_nlms && !m_fixed) {
                tapLen.setList({8});
            } else {
                tapLen.set(128, 256, 128, '+');
            }
        }
        if (m_tone) {
            vkcRebuild(len, "len").set(64, 80, 16, '+');
        }
        if (m_tone || m_fullband || m_subband) {
            vkcRebuild(mode, "mode").set(0, 1, 1, '+');
        }
        if (m_subband || m_process) {
            vkcRebuild(numSubbands, "numSubbands").setList({m_process && m_fixed ? 33 : 65});
        }
        setTypes();
        if (m_nlms || m_fir) {
            return walk({&len, &tapLen});
        }
        if (m_tone) {
            return walk({&len, &mode});
        }
        if (m_fullband) {
            return walk({&len, &tapLen, &mode});
        }
        if (m_subband) {
            return walk({&numSubbands, &mode});
        }
        if (m_fixed) {
            vkcRebuild(len, "len").setList({16});
            return walk({&len, &numSubbands, &scaleFactor});
        }
        return walk({&numSubbands});
    }

    bool makeData() override {
        numSegments = mode.value() != 0 ? 4 : 2;
        if (m_nlms || m_fir) {
            return filterData();
        }
        if (m_tone) {
            return toneData();
        }
        if (m_fullband) {
            return fullbandData();
        }
        return m_subband ? subbandData() : processData();
    }

    void flushData() override {
        for (vkrMatrice* matrix : matrices) {
            matrix->deleteMatrice();
        }
        vkcGridTest::flushData();
    }

    double getDivisor() override {
        if (m_nlms || m_fir) {
            return static_cast<double>(len.value()) * tapLen.value();
        }
        if (m_fullband) {
            const double taps = tapLen.value();
            const double length = len.value();
            return std::trunc(std::sqrt((taps * taps + length * length) * 0.5));
        }
        if (m_subband) {
            return static_cast<double>(numSubbands.value()) * (m_update ? 1 : numSegments);
        }
        return m_tone ? len.value() : fft_size;
    }

private:
    // Memory of a state whose size the library has given.
    template <class State>
    bool makeState(State*& state, int size) {
        return hold(state, krMalloc(size, 0, 0, nullptr), krFree);
    }

    void setTypes() {
        const vkType real = m_fixed ? vk16s : vk32f;
        const vkType complex = m_fixed ? vk32sc : vk32fc;
        initVectors(vectors, real);
        initVectors({&pSubbands, &pSrcSinSubbands, &pSrcAdaptiveFilterErr, &pSrcFixedFilterErr}, complex);
        for (vkrMatrice* matrix : matrices) {
            matrix->init(complex);
        }
        initVectors({&pDstStepSizeI}, vk32s);
        // Work memory.
        initVectors({&pBuf, &pInitBuf}, vk8u);
    }

    bool filterData() {
        if (m_nlms) {
            pErr = 0;
            pErr_16s = 0;
            return pSrcSpchRef.createVector(m_grid.room(tapLen) + m_grid.room(len) + 1, setValue, 0.5, 0) &&
                   pStepSize.createVector(m_grid.room(len), setValue, 0.5, 0) &&
                   pSrcSpch.createVector(m_grid.room(len), setValue, 0.5, 0) &&
                   pDstSpch.createVector(m_grid.room(len), setZero, 0, 0) &&
                   pSrcDstCoef.createVector(m_grid.room(tapLen), setValue, 0.5, 0);
        }
        return pSrcSpchRef.createVector(m_grid.room(tapLen) + m_grid.room(len), setRand, -1, 1) &&
               pSrcSpch.createVector(m_grid.room(len), setRand, -1, 1) &&
               pDstSpch.createVector(m_grid.room(len), setZero, 0, 0) &&
               pSrcCoef.createVector(m_grid.room(tapLen), setRand, -1, 1);
    }

    bool toneData() {
        const int freq = sampleFreq[mode.value() != 0];
        int pSize = 0;
        if (!pSignal.createVector(m_grid.room(len), setZero, 0, 0)) {
            return false;
        }
        if (m_fixed) {
            veksToneDetectGetStateSize_EC_16s(freq, &pSize);
            return makeState(pStateTDI, pSize) && checkStatus(veksToneDetectInit_EC_16s(pStateTDI, freq)) == krOk;
        }
        veksToneDetectGetStateSize_EC_32f(freq, &pSize);
        return makeState(pStateTD, pSize) && checkStatus(veksToneDetectInit_EC_32f(pStateTD, freq)) == krOk;
    }

    bool fullbandData() {
        // The far end's past lies before the pointer that the update takes.
        const bool made = m_update
                              ? tapLen.value() > 0 &&
                                    pSrcRin.createVector(m_grid.room(tapLen) + m_grid.room(len) + 1, setRand, -1, 1) &&
                                    pSrcSin.createVector(m_grid.room(len), setRand, -1, 1) &&
                                    pDstStepSize.createVector(m_grid.room(len), setZero, 0, 0)
                              : pAdaptiveFilterErr.createVector(m_grid.room(len), setRand, -1, 1) &&
                                    pFixedFilterErr.createVector(m_grid.room(len), setRand, -1, 1) &&
                                    pAdaptiveCoefs.createVector(m_grid.room(tapLen), setRand, -1, 1) &&
                                    pFixedCoefs.createVector(m_grid.room(tapLen), setRand, -1, 1);
        if (!made) {
            return false;
        }
        const int freq = sampleFreq[mode.value() != 0];
        int pSize = 0;
        if (m_fixed) {
            veksFullbandControllerGetSize_EC_16s(1, 1, freq, &pSize);
            return makeState(pStateFCI, pSize) &&
                   checkStatus(veksFullbandControllerInit_EC_16s(pStateFCI, 1, 1, freq)) == krOk;
        }
        veksFullbandControllerGetSize_EC_32f(1, 1, freq, &pSize);
        return makeState(pStateFC, pSize) &&
               checkStatus(veksFullbandControllerInit_EC_32f(pStateFC, 1, 1, freq)) == krOk;
    }

    bool subbandData() {
        const int bands = numSubbands.value();
        const double lo = m_fixed ? 32767 : -1;
        const double hi = m_fixed ? 0 : 1;
        vkVector& steps = m_fixed ? pDstStepSizeI : pDstStepSize;
        // The update reads a frame of both signals.
        const int signal = std::max(bands, framesize);
        const bool made = m_update ? pSrcRin.createVector(signal, setRand, lo, hi) &&
                                         pSrcSin.createVector(signal, setRand, lo, hi) &&
                                         pSrcSinSubbands.createVector(bands, setRand, lo, hi) &&
                                         steps.createVector(bands, setZero, 0, 0) &&
                                         ppSrcRinSubbandsHistory.createMatrice(numSegments, bands, setRand, -1.0, 1.0)
                                   : pSrcAdaptiveFilterErr.createVector(bands, setRand, lo, hi) &&
                                         pSrcFixedFilterErr.createVector(bands, setRand, lo, hi) &&
                                         ppDstAdaptiveCoefs.createMatrice(numSegments, bands, setRand, -1.0, 1.0) &&
                                         ppDstFixedCoefs.createMatrice(numSegments, bands, setRand, -1.0, 1.0);
        if (!made) {
            return false;
        }
        const int freq = sampleFreq[mode.value() != 0];
        int pSize = 0;
        if (m_fixed) {
            veksSubbandControllerGetSize_EC_16s(bands, framesize, 1, freq, &pSize);
            return makeState(pStateSCI, pSize) &&
                   checkStatus(veksSubbandControllerInit_EC_16s(pStateSCI, bands, framesize, numSegments, freq)) ==
                       krOk;
        }
        veksSubbandControllerGetSize_EC_32f(bands, framesize, 1, freq, &pSize);
        return makeState(pStateSC, pSize) &&
               checkStatus(veksSubbandControllerInit_EC_32f(pStateSC, bands, framesize, numSegments, freq)) == krOk;
    }

    bool processData() {
        int pSize = 0;
        int bufSize = 0;
        if (m_fixed) {
            veksSubbandProcessGetSize_16s(ftt_order, window_len, &pSize, &fft_size, &bufSize);
        } else {
            veksSubbandProcessGetSize_32f(ftt_order, window_len, &pSize, &fft_size, &bufSize);
        }
        const int bytes = std::max(bufSize, numSubbands.value());
        if (!pSignal.createVector(m_fixed ? m_grid.room(len) : framesize, setRand, -1, 1) ||
            !pSubbands.createVector(std::max<long long>(m_grid.room(numSubbands), fft_size / 2 + 1), setRand, -1, 1) ||
            !pWindow.createVector(window_len, setZero, 0, 0) || !pInitBuf.createVector(bytes, setZero, 0, 0) ||
            !pBuf.createVector(bytes, m_fixed ? setRand : setZero, -1, 1)) {
            return false;
        }
        for (int n = 0; n < window_len; ++n) {
            pWindow.setIndex(n, setValue, (m_fixed ? 32767 : 1) * std::sin(std::acos(-1.0) * (n + 0.5) / window_len),
                             0);
        }
        if (m_fixed) {
            return makeState(pStateSPI, pSize) &&
                   checkStatus(veksSubbandProcessInit_16s(pStateSPI, ftt_order, framesize, window_len, pWindow.m_16s,
                                                          pInitBuf.m_8u)) == krOk;
        }
        return makeState(pStateSP, pSize) &&
               checkStatus(veksSubbandProcessInit_32f(pStateSP, ftt_order, framesize, window_len, pWindow.m_32f,
                                                      pInitBuf.m_8u)) == krOk;
    }

    const bool m_fixed = m_func.contains("16s");
    const bool m_nlms = m_func.contains("NLMS");
    const bool m_fir = m_func.contains("FIR");
    const bool m_tone = m_func.contains("ToneDetect");
    const bool m_fullband = m_func.contains("FullbandController");
    const bool m_subband = m_func.contains("SubbandController");
    const bool m_update = m_func.contains("ControllerUpdate");
    const bool m_process = m_func.contains("SubbandAnalysis") || m_func.contains("SubbandSynthesis");
};

} // namespace

VK_REG(TimEC, veksToneDetect_EC_16s, veksToneDetect_EC_16s(pSignal.m_16s, len.value(), &pResult, pStateTDI))
VK_REG(TimEC, veksSubbandAnalysis_16s32sc_Sfs,
       veksSubbandAnalysis_16s32sc_Sfs(pSignal.m_16s, pSubbands.m_32sc, pStateSPI, scaleFactor.value(), pBuf.m_8u))
VK_REG(TimEC, veksSubbandSynthesis_32sc16s_Sfs,
       veksSubbandSynthesis_32sc16s_Sfs(pSubbands.m_32sc, pSignal.m_16s, pStateSPI, scaleFactor.value(), pBuf.m_8u))
VK_REG(TimEC, veksSubbandControllerUpdate_EC_16s,
       veksSubbandControllerUpdate_EC_16s(pSrcRin.m_16s, pSrcSin.m_16s, ppSrcRinSubbandsHistory.m_r32sc,
                                          pSrcSinSubbands.m_32sc, pDstStepSizeI.m_32s, pStateSCI))
VK_REG(TimEC, veksSubbandController_EC_16s,
       veksSubbandController_EC_16s(pSrcAdaptiveFilterErr.m_32sc, pSrcFixedFilterErr.m_32sc, ppDstAdaptiveCoefs.m_r32sc,
                                    ppDstFixedCoefs.m_r32sc, &pDstSGain_16s, pStateSCI))
VK_REG(TimEC, veksFullbandControllerUpdate_EC_16s,
       veksFullbandControllerUpdate_EC_16s(pSrcRin.m_16s + tapLen.value() + 1, pSrcSin.m_16s, pDstStepSize.m_16s,
                                           pStateFCI))
VK_REG(TimEC, veksFullbandController_EC_16s,
       veksFullbandController_EC_16s(pAdaptiveFilterErr.m_16s, pFixedFilterErr.m_16s, pAdaptiveCoefs.m_16s,
                                     pFixedCoefs.m_16s, &pSGain_16s, pStateFCI))
VK_REG(TimEC, veksFIR_EC_16s,
       veksFIR_EC_16s(pSrcSpchRef.m_16s + tapLen.value(), pSrcSpch.m_16s, pDstSpch.m_16s, len.value(), pSrcCoef.m_16s,
                      tapLen.value()))
VK_REG(TimEC, veksNLMS_EC_16s,
       veksNLMS_EC_16s(pSrcSpchRef.m_16s + tapLen.value() + 1, pSrcSpch.m_16s, pStepSize.m_16s, pDstSpch.m_16s,
                       len.value(), pSrcDstCoef.m_16s, tapLen.value(), &pErr_16s))
VK_REG(TimEC, veksToneDetect_EC_32f, veksToneDetect_EC_32f(pSignal.m_32f, len.value(), &pResult, pStateTD))
VK_REG(TimEC, veksSubbandAnalysis_32f32fc,
       veksSubbandAnalysis_32f32fc(pSignal.m_32f, pSubbands.m_32fc, pStateSP, pBuf.m_8u))
VK_REG(TimEC, veksSubbandSynthesis_32fc32f,
       veksSubbandSynthesis_32fc32f(pSubbands.m_32fc, pSignal.m_32f, pStateSP, pBuf.m_8u))
VK_REG(TimEC, veksSubbandControllerUpdate_EC_32f,
       veksSubbandControllerUpdate_EC_32f(pSrcRin.m_32f, pSrcSin.m_32f, ppSrcRinSubbandsHistory.m_r32fc,
                                          pSrcSinSubbands.m_32fc, pDstStepSize.m_32f, pStateSC))
VK_REG(TimEC, veksSubbandController_EC_32f,
       veksSubbandController_EC_32f(pSrcAdaptiveFilterErr.m_32fc, pSrcFixedFilterErr.m_32fc, ppDstAdaptiveCoefs.m_r32fc,
                                    ppDstFixedCoefs.m_r32fc, &pDstSGain, pStateSC))
VK_REG(TimEC, veksFullbandControllerUpdate_EC_32f,
       veksFullbandControllerUpdate_EC_32f(pSrcRin.m_32f + tapLen.value() + 1, pSrcSin.m_32f, pDstStepSize.m_32f,
                                           pStateFC))
VK_REG(TimEC, veksFullbandController_EC_32f,
       veksFullbandController_EC_32f(pAdaptiveFilterErr.m_32f, pFixedFilterErr.m_32f, pAdaptiveCoefs.m_32f,
                                     pFixedCoefs.m_32f, &pSGain, pStateFC))
VK_REG(TimEC, veksFIR_EC_32f,
       veksFIR_EC_32f(pSrcSpchRef.m_32f + tapLen.value(), pSrcSpch.m_32f, pDstSpch.m_32f, len.value(), pSrcCoef.m_32f,
                      tapLen.value()))
VK_REG(TimEC, veksNLMS_EC_32f,
       veksNLMS_EC_32f(pSrcSpchRef.m_32f + tapLen.value() + 1, pSrcSpch.m_32f, pStepSize.m_32f, pDstSpch.m_32f,
                       len.value(), pSrcDstCoef.m_32f, tapLen.value(), &pErr))
