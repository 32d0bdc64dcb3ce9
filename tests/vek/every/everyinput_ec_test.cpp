// Calls of the echo cancellers with every kind of input.
#include <gtest/gtest.h>

#include <cmath>

#include "everyinput.h"
#include "veksc.h"

namespace {

using S = Vek16s;
using L = Vek32s;
using F = Vek32f;
using C = Vek32sc;
using D = Vek32fc;
using everyinput::Range;
using everyinput::Run;

constexpr Range kUnit{-1, 1};
constexpr Range kStep16{0, 32767};
constexpr Range kStep{0, 1};

constexpr int kFrame = 80;
constexpr int kTaps = 128;
constexpr int kBands = 33;
constexpr int kSegments = 6;
constexpr int kRate = 8000;

template <class State, VekStatus (*size)(int, int*), VekStatus (*init)(State*, int)>
State* toneDetector(Run& r) {
    return r.state<State>([](int* bytes) { return size(kRate, bytes); },
                          [](State* state) { return init(state, kRate); });
}

template <class State, VekStatus (*size)(int, int, int, int*), VekStatus (*init)(State*, int, int, int)>
State* fullband(Run& r) {
    return r.state<State>([](int* bytes) { return size(kFrame, kTaps, kRate, bytes); },
                          [](State* state) { return init(state, kFrame, kTaps, kRate); });
}

template <class State, VekStatus (*size)(int, int, int, int, int*), VekStatus (*init)(State*, int, int, int, int)>
State* subband(Run& r) {
    return r.state<State>([](int* bytes) { return size(kBands, kFrame, kSegments, kRate, bytes); },
                          [](State* state) { return init(state, kBands, kFrame, kSegments, kRate); });
}

constexpr auto tone16 =
    toneDetector<VeksToneDetectState_EC_16s, veksToneDetectGetStateSize_EC_16s, veksToneDetectInit_EC_16s>;
constexpr auto tone32 =
    toneDetector<VeksToneDetectState_EC_32f, veksToneDetectGetStateSize_EC_32f, veksToneDetectInit_EC_32f>;
constexpr auto full16 = fullband<VeksFullbandControllerState_EC_16s, veksFullbandControllerGetSize_EC_16s,
                                 veksFullbandControllerInit_EC_16s>;
constexpr auto full32 = fullband<VeksFullbandControllerState_EC_32f, veksFullbandControllerGetSize_EC_32f,
                                 veksFullbandControllerInit_EC_32f>;
constexpr auto sub16 =
    subband<VeksSubbandControllerState_EC_16s, veksSubbandControllerGetSize_EC_16s, veksSubbandControllerInit_EC_16s>;
constexpr auto sub32 =
    subband<VeksSubbandControllerState_EC_32f, veksSubbandControllerGetSize_EC_32f, veksSubbandControllerInit_EC_32f>;
constexpr auto subDT = subband<VeksSubbandControllerDTState_EC_16s, veksSubbandControllerDTGetSize_EC_16s,
                               veksSubbandControllerDTInit_EC_16s>;

/// What analysis and synthesis of 2^order points need, with a sine window twice as long and frames of half the points.
struct Sizes {
    int order;
    int window() const { return 2 << order; }
    int frame() const { return 1 << (order - 1); }
    int bands() const { return (1 << (order - 1)) + 1; }
};

template <class T>
const T* sine(Run& r, const Sizes& sizes, double one) {
    std::vector<T> window;
    for (int i = 0; i < sizes.window(); ++i) {
        window.push_back(static_cast<T>(one * std::sin(M_PI * (i + 0.5) / sizes.window())));
    }
    return r.given(window);
}

int bytes(VekStatus (*size)(int, int, int*, int*, int*), const Sizes& sizes, bool work) {
    int state = 0;
    int points = 0;
    int buffer = 0;
    size(sizes.order, sizes.window(), &state, &points, &buffer);
    return work ? buffer : state;
}

Vek8u* work16(Run& r, int order) {
    return r.room<Vek8u>(bytes(veksSubbandProcessGetSize_16s, {order}, true));
}

Vek8u* work32(Run& r, int order) {
    return r.room<Vek8u>(bytes(veksSubbandProcessGetSize_32f, {order}, true));
}

VeksSubbandProcessState_16s* process16(Run& r, int order) {
    const Sizes sizes{order};
    const S* const window = sine<S>(r, sizes, 32767);
    Vek8u* const work = work16(r, order);
    const auto size = [&](int* count) {
        *count = bytes(veksSubbandProcessGetSize_16s, sizes, false);
        return vekStsNoErr;
    };
    return r.state<VeksSubbandProcessState_16s>(size, [&](VeksSubbandProcessState_16s* state) {
        return veksSubbandProcessInit_16s(state, order, sizes.frame(), sizes.window(), window, work);
    });
}

VeksSubbandProcessState_32f* process32(Run& r, int order) {
    const Sizes sizes{order};
    const F* const window = sine<F>(r, sizes, 1);
    Vek8u* const work = work32(r, order);
    const auto size = [&](int* count) {
        *count = bytes(veksSubbandProcessGetSize_32f, sizes, false);
        return vekStsNoErr;
    };
    return r.state<VeksSubbandProcessState_32f>(size, [&](VeksSubbandProcessState_32f* state) {
        return veksSubbandProcessInit_32f(state, order, sizes.frame(), sizes.window(), window, work);
    });
}

const everyinput::Family fullBand{
    EVERY_INPUT(veksFIR_EC_16s, ({1, 67, 256, 4096}), r.in<S>(80, n - 1), r.in<S>(80), r.out<S>(80), 80, r.in<S>(n), n),
    EVERY_INPUT(veksFIR_EC_32f, ({1, 67, 256, 4096}), r.in<F>(80, kUnit, n - 1), r.in<F>(80, kUnit), r.out<F>(80), 80,
                r.in<F>(n, kUnit), n)
        .within(1e-5),
    EVERY_INPUT(veksNLMS_EC_16s, ({1, 67, 256, 4096}), r.in<S>(80, n), r.in<S>(80), r.in<S>(80, kStep16), r.out<S>(80),
                80, r.both<S>(n), n, r.both<S>(1)),
    EVERY_INPUT(veksNLMS_EC_32f, ({1, 67, 256, 4096}), r.in<F>(80, kUnit, n), r.in<F>(80, kUnit), r.in<F>(80, kStep),
                r.out<F>(80), 80, r.both<F>(n, {-0.1, 0.1}), n, r.both<F>(1, kUnit))
        .within(1e-4, 1),
    EVERY_INPUT(veksToneDetectGetStateSize_EC_16s, ({8000, 16000}), n, r.out<L>(1)),
    EVERY_INPUT(veksToneDetectGetStateSize_EC_32f, ({8000, 16000}), n, r.out<L>(1)),
    EVERY_INPUT(veksToneDetectInit_EC_16s, ({8000, 16000}), tone16(r), n),
    EVERY_INPUT(veksToneDetectInit_EC_32f, ({8000, 16000}), tone32(r), n),
    EVERY_INPUT(veksToneDetect_EC_16s, ({1, 80, 67, 65536}), r.in<S>(n), n, r.out<L>(1), tone16(r)),
    EVERY_INPUT(veksToneDetect_EC_32f, ({1, 80, 67, 65536}), r.in<F>(n, kUnit), n, r.out<L>(1), tone32(r)),
    EVERY_INPUT(veksFullbandControllerGetSize_EC_16s, ({1}), kFrame, kTaps, kRate, r.out<L>(1)),
    EVERY_INPUT(veksFullbandControllerGetSize_EC_32f, ({1}), kFrame, kTaps, kRate, r.out<L>(1)),
    EVERY_INPUT(veksFullbandControllerInit_EC_16s, ({1}), full16(r), kFrame, kTaps, kRate),
    EVERY_INPUT(veksFullbandControllerInit_EC_32f, ({1}), full32(r), kFrame, kTaps, kRate),
    EVERY_INPUT(veksFullbandControllerUpdate_EC_16s, ({1}), r.in<S>(kFrame, kTaps), r.in<S>(kFrame), r.out<S>(kFrame),
                full16(r)),
    EVERY_INPUT(veksFullbandControllerUpdate_EC_32f, ({1}), r.in<F>(kFrame, kUnit, kTaps), r.in<F>(kFrame, kUnit),
                r.out<F>(kFrame), full32(r))
        .within(1e-5),
    EVERY_INPUT(veksFullbandController_EC_16s, ({1}), r.in<S>(kFrame), r.in<S>(kFrame), r.both<S>(kTaps),
                r.both<S>(kTaps), r.out<S>(1), full16(r)),
    EVERY_INPUT(veksFullbandController_EC_32f, ({1}), r.in<F>(kFrame, kUnit), r.in<F>(kFrame, kUnit),
                r.both<F>(kTaps, kUnit), r.both<F>(kTaps, kUnit), r.out<F>(1), full32(r))
        .within(1e-5),
};

const everyinput::Family process{
    EVERY_INPUT(veksSubbandProcessGetSize_16s, ({5, 6}), n, 2 << n, r.out<L>(1), r.out<L>(1), r.out<L>(1)),
    EVERY_INPUT(veksSubbandProcessGetSize_32f, ({5, 6}), n, 2 << n, r.out<L>(1), r.out<L>(1), r.out<L>(1)),
    EVERY_INPUT(veksSubbandProcessInit_16s, ({5, 6}), process16(r, n), n, 1 << n, 2 << n, r.in<S>(2 << n),
                work16(r, n)),
    EVERY_INPUT(veksSubbandProcessInit_32f, ({5, 6}), process32(r, n), n, 1 << n, 2 << n, r.in<F>(2 << n, kUnit),
                work32(r, n)),
    EVERY_INPUT(veksSubbandAnalysis_16s32sc_Sfs, ({5, 6}), r.in<S>(Sizes{n}.frame()), r.out<C>(Sizes{n}.bands()),
                process16(r, n), r.number(-31, 31), work16(r, n)),
    EVERY_INPUT(veksSubbandAnalysis_32f32fc, ({5, 6}), r.in<F>(Sizes{n}.frame(), kUnit), r.out<D>(Sizes{n}.bands()),
                process32(r, n), work32(r, n))
        .within(1e-5),
    EVERY_INPUT(veksSubbandSynthesis_32sc16s_Sfs, ({5, 6}), r.in<C>(Sizes{n}.bands()), r.out<S>(Sizes{n}.frame()),
                process16(r, n), r.number(-31, 31), work16(r, n)),
    EVERY_INPUT(veksSubbandSynthesis_32fc32f, ({5, 6}), r.in<D>(Sizes{n}.bands(), kUnit), r.out<F>(Sizes{n}.frame()),
                process32(r, n), work32(r, n))
        .within(1e-5),
};

const everyinput::Family subBands{
    EVERY_INPUT(veksFIRSubband_EC_32sc_Sfs, ({1, 33, 65}), r.inRows<C>(kSegments, n), r.inRows<C>(kSegments, n),
                r.out<C>(n), kSegments, n, r.number(-31, 31)),
    EVERY_INPUT(veksFIRSubbandLow_EC_32sc_Sfs, ({1, 33, 65}), r.inRows<C>(kSegments, n), r.inRows<C>(kSegments, n),
                kSegments, r.out<C>(n), n / 3, n, r.number(-31, 31)),
    EVERY_INPUT(veksFIRSubbandCoeffUpdate_EC_32sc_I, ({1, 33, 65}), r.in<L>(n), r.inRows<C>(kSegments, n), r.in<C>(n),
                r.bothRows<C>(kSegments, n), kSegments, n, r.number(1, 31)),
    EVERY_INPUT(veksFIRSubbandLowCoeffUpdate_EC_32sc_I, ({1, 33, 65}), r.inRows<C>(kSegments, n), r.in<C>(n),
                r.bothRows<C>(kSegments, n), kSegments, r.out<C>(n), r.in<L>(n), n / 3, n, r.number(1, 31)),
    EVERY_INPUT(veksFIRSubbandAPCoeffUpdate_EC_32fc_I, ({1, 33, 65}), r.inRows<Vek64f>(2, n),
                r.inRows<D>(kSegments + 1, n), r.inRows<D>(2, n), r.bothRows<D>(kSegments, n), kSegments, n, 2)
        .within(1e-6),
    EVERY_INPUT(veksSubbandControllerGetSize_EC_16s, ({1}), kBands, kFrame, kSegments, kRate, r.out<L>(1)),
    EVERY_INPUT(veksSubbandControllerGetSize_EC_32f, ({1}), kBands, kFrame, kSegments, kRate, r.out<L>(1)),
    EVERY_INPUT(veksSubbandControllerDTGetSize_EC_16s, ({1}), kBands, kFrame, kSegments, kRate, r.out<L>(1)),
    EVERY_INPUT(veksSubbandControllerInit_EC_16s, ({1}), sub16(r), kBands, kFrame, kSegments, kRate),
    EVERY_INPUT(veksSubbandControllerInit_EC_32f, ({1}), sub32(r), kBands, kFrame, kSegments, kRate),
    EVERY_INPUT(veksSubbandControllerDTInit_EC_16s, ({1}), subDT(r), kBands, kFrame, kSegments, kRate),
    EVERY_INPUT(veksSubbandControllerUpdate_EC_16s, ({kBands}), r.in<S>(kFrame), r.in<S>(kFrame),
                r.inRows<C>(kSegments, n), r.in<C>(n), r.out<L>(n), sub16(r)),
    EVERY_INPUT(veksSubbandControllerUpdate_EC_32f, ({kBands}), r.in<F>(kFrame, kUnit), r.in<F>(kFrame, kUnit),
                r.inRows<D>(kSegments, n), r.in<D>(n), r.out<F>(n), sub32(r))
        .within(1e-5),
    EVERY_INPUT(veksSubbandControllerDTUpdate_EC_16s, ({kBands}), r.inRows<C>(kSegments, n), r.in<C>(n), r.in<C>(n),
                r.out<L>(n), r.out<L>(1), r.out<L>(1), r.number(0, kBands - 1), subDT(r)),
    EVERY_INPUT(veksSubbandController_EC_16s, ({kBands}), r.in<C>(n), r.in<C>(n), r.bothRows<C>(kSegments, n),
                r.bothRows<C>(kSegments, n), r.out<S>(1), sub16(r)),
    EVERY_INPUT(veksSubbandController_EC_32f, ({kBands}), r.in<D>(n), r.in<D>(n), r.bothRows<D>(kSegments, n),
                r.bothRows<D>(kSegments, n), r.out<F>(1), sub32(r))
        .within(1e-5),
    EVERY_INPUT(veksSubbandControllerDT_EC_16s, ({kBands}), r.in<C>(n), r.in<C>(n), r.bothRows<C>(kSegments, n),
                r.bothRows<C>(kSegments, n), r.both<L>(1), r.out<L>(1), r.number(0, 512), r.number(0, 1),
                r.number(0, 1), r.number(0, kBands - 1), subDT(r)),
};

TEST(VekEveryInput, OfTheFullBandCanceller) {
    fullBand.check();
}

TEST(VekEveryInput, OfTheSubbandTransforms) {
    process.check();
}

TEST(VekEveryInput, OfTheSubbandCanceller) {
    subBands.check();
}

} // namespace
