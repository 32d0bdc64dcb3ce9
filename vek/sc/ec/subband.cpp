// Subband analysis and synthesis: the states, frames in and out, scaling. The transforms are kernels. The integer form
// works in double precision, which holds every sum of 16-bit samples and Q15 windows exactly.
#include <bit>
#include <cstring>

#include "sc/common/signal_check.h"
#include "sc/ec/state.h"
#include "sc/kernels/ec.h"
#include "veksc_ec.h"

namespace {

using namespace vek;

constexpr int kMaxFolds = 16;
constexpr uint32_t kMark = 0x42425553;

// Behind it: the two windows, the newest samples and the sums of the synthesis, windowLen elements each.
template <typename T>
struct Process {
    uint32_t mark;
    int order, frameSize, windowLen;

    T* analysisWindow() { return reinterpret_cast<T*>(this + 1); }
    T* synthesisWindow() { return analysisWindow() + windowLen; }
    T* history() { return analysisWindow() + 2 * windowLen; }
    T* sums() { return analysisWindow() + 3 * windowLen; }
    size_t kept() const { return static_cast<size_t>(windowLen - frameSize); }
};

// A mark of its own for each form.
template <typename T>
constexpr uint32_t markOf() {
    return kMark + sizeof(T);
}

VekStatus checkShape(int order, int windowLen) {
    if (order != 5 && order != 6) {
        return vekStsFftOrderErr;
    }
    const int points = 1 << order;
    return windowLen < points || windowLen > kMaxFolds * points || windowLen % points != 0 ? vekStsSizeErr
                                                                                           : vekStsNoErr;
}

template <typename T>
struct Work {
    alignas(32) T fold[kMaxFoldPoints];
};

template <typename T>
VekStatus sizeOf(int order, int windowLen, int* pStateSize, int* pFFTSize, int* pBufSize) {
    if (anyNull(pStateSize, pFFTSize, pBufSize)) {
        return vekStsNullPtrErr;
    }
    if (const VekStatus status = checkShape(order, windowLen); status != vekStsNoErr) {
        return status;
    }
    *pStateSize = ec::bytesOf<Process<T>>(4 * sizeof(T) * static_cast<size_t>(windowLen));
    *pFFTSize = 1 << order;
    *pBufSize = ec::bytesOf<Work<T>>(0);
    return vekStsNoErr;
}

template <typename T, typename S>
VekStatus init(void* pState, int order, int frameSize, int windowLen, const S* pWindow, Vek8u* pInitBuf, double unit) {
    if (anyNull(pWindow, pInitBuf) || pState == nullptr) {
        return vekStsNullPtrErr;
    }
    if (const VekStatus status = checkShape(order, windowLen); status != vekStsNoErr) {
        return status;
    }
    if (frameSize < 1 || frameSize > windowLen) {
        return vekStsSizeErr;
    }
    Process<T>& p = *ec::placeOf<Process<T>>(pState);
    p = {markOf<T>(), order, frameSize, windowLen};
    T* analysis = p.analysisWindow();
    T* synthesis = p.synthesisWindow();
    std::memset(p.history(), 0, 2 * sizeof(T) * static_cast<size_t>(windowLen));
    const double points = 1 << order;
    for (int n = 0; n < windowLen; ++n) {
        double energy = 0;
        for (int m = n % frameSize; m < windowLen; m += frameSize) {
            const double w = unit * pWindow[m];
            energy += w * w;
        }
        const double w = unit * pWindow[n];
        analysis[n] = static_cast<T>(w);
        synthesis[n] = static_cast<T>(energy > 0 ? w / (energy * points) : 0);
    }
    return vekStsNoErr;
}

// Calls transform(process, fold) on a state that has had its start, with the room that the caller lends.
template <typename T, typename In, typename Out, typename Transform>
[[gnu::always_inline]] inline VekStatus run(const In* in, const Out* out, void* pState, int scaleFactor, Vek8u* pBuf,
                                            Transform transform) {
    if (anyNull(in, out, pBuf) || pState == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badScale(scaleFactor)) {
        return vekStsScaleRangeErr;
    }
    Process<T>& process = *ec::placeOf<Process<T>>(pState);
    if (process.mark != markOf<T>()) {
        return vekStsStateErr;
    }
    transform(process, ec::placeOf<Work<T>>(pBuf)->fold);
    return vekStsNoErr;
}

double powerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<uint64_t>(1023 + exponent) << 52);
}

// Makes room for the newest frame behind the samples that stay.
template <typename T>
T* dropOldest(Process<T>& p) {
    T* history = p.history();
    std::memmove(history, history + p.frameSize, p.kept() * sizeof(T));
    return history + p.kept();
}

template <typename T>
void dropFrame(Process<T>& p) {
    T* sums = p.sums();
    std::memmove(sums, sums + p.frameSize, p.kept() * sizeof(T));
    std::memset(sums + p.kept(), 0, static_cast<size_t>(p.frameSize) * sizeof(T));
}

} // namespace

VekStatus veksSubbandProcessGetSize_16s(int order, int windowLen, int* pStateSize, int* pFFTSize, int* pBufSize) {
    return sizeOf<double>(order, windowLen, pStateSize, pFFTSize, pBufSize);
}

VekStatus veksSubbandProcessGetSize_32f(int order, int windowLen, int* pStateSize, int* pFFTSize, int* pBufSize) {
    return sizeOf<float>(order, windowLen, pStateSize, pFFTSize, pBufSize);
}

VekStatus veksSubbandProcessInit_16s(VeksSubbandProcessState_16s* pState, int order, int frameSize, int windowLen,
                                     const Vek16s* pWindow, Vek8u* pInitBuf) {
    return init<double>(pState, order, frameSize, windowLen, pWindow, pInitBuf, 1.0 / 32768);
}

VekStatus veksSubbandProcessInit_32f(VeksSubbandProcessState_32f* pState, int order, int frameSize, int windowLen,
                                     const Vek32f* pWindow, Vek8u* pInitBuf) {
    return init<float>(pState, order, frameSize, windowLen, pWindow, pInitBuf, 1);
}

VekStatus veksSubbandAnalysis_16s32sc_Sfs(const Vek16s* pSignal, Vek32sc* pSubbands,
                                          VeksSubbandProcessState_16s* pState, int scaleFactor, Vek8u* pBuf) {
    return run<double>(
        pSignal, pSubbands, pState, scaleFactor,
        pBuf, [&](Process<double> & p, double* fold) __attribute__((always_inline)) {
            Vek64fc spectrum[kMaxFoldPoints / 2 + 1];
            const FoldKernels& kernels = foldKernels();
            kernels.widen16(pSignal, dropOldest(p), p.frameSize);
            kernels.analyse64f(p.order, p.history(), p.analysisWindow(), p.windowLen, fold, spectrum);
            kernels.round32(&spectrum[0].re, powerOfTwo(-scaleFactor), &pSubbands[0].re, (1 << p.order) + 2);
        });
}

VekStatus veksSubbandAnalysis_32f32fc(const Vek32f* pSignal, Vek32fc* pSubbands, VeksSubbandProcessState_32f* pState,
                                      Vek8u* pBuf) {
    return run<float>(pSignal, pSubbands, pState, 0, pBuf, [&](Process<float>& p, float* fold) {
        std::memmove(dropOldest(p), pSignal, static_cast<size_t>(p.frameSize) * sizeof(Vek32f));
        foldKernels().analyse32f(p.order, p.history(), p.analysisWindow(), p.windowLen, fold, pSubbands);
    });
}

VekStatus veksSubbandSynthesis_32sc16s_Sfs(const Vek32sc* pSubbands, Vek16s* pSignal,
                                           VeksSubbandProcessState_16s* pState, int scaleFactor, Vek8u* pBuf) {
    return run<double>(
        pSubbands, pSignal, pState, scaleFactor,
        pBuf, [&](Process<double> & p, double* fold) __attribute__((always_inline)) {
            // Scaled on the way in: frames of different scale factors overlap in the sums.
            const double factor = powerOfTwo(-scaleFactor);
            Vek64fc spectrum[kMaxFoldPoints / 2 + 1];
            const FoldKernels& kernels = foldKernels();
            kernels.widen32(&pSubbands[0].re, factor, &spectrum[0].re, (1 << p.order) + 2);
            kernels.synthesise64f(p.order, spectrum, p.synthesisWindow(), p.windowLen, fold, p.sums());
            kernels.round16(p.sums(), 1, pSignal, p.frameSize);
            dropFrame(p);
        });
}

VekStatus veksSubbandSynthesis_32fc32f(const Vek32fc* pSubbands, Vek32f* pSignal, VeksSubbandProcessState_32f* pState,
                                       Vek8u* pBuf) {
    return run<float>(pSubbands, pSignal, pState, 0, pBuf, [&](Process<float>& p, float* fold) {
        foldKernels().synthesise32f(p.order, pSubbands, p.synthesisWindow(), p.windowLen, fold, p.sums());
        std::memcpy(pSignal, p.sums(), static_cast<size_t>(p.frameSize) * sizeof(Vek32f));
        dropFrame(p);
    });
}
