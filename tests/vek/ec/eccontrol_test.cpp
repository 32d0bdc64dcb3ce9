// Controllers of echo cancellers, in whole cancellers: an echo path is learnt by the adaptive filter and handed to the
// fixed one, steps fall in double talk and rise in single talk, never outside their range, the fixed filter survives
// double talk, a changed path is learnt anew. The decisions are plain code: one level serves for all.
#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <numeric>
#include <random>

#include "echocanceller.h"
#include "veksc.h"

namespace {

using namespace echocanceller;
using Bytes = std::vector<Vek8u>;
template <class S>
class VekEcFullband : public testing::Test {};
using Forms = testing::Types<float, int16_t>;
TYPED_TEST_SUITE(VekEcFullband, Forms);

TYPED_TEST(VekEcFullband, LearnsHandsOverAndSurvivesDoubleTalk) {
    const Track t = cancel<TypeParam>(scene(5, 2, 3));
    EXPECT_GT(t.lossOf(1.5, 2), 30);
    EXPECT_GT(t.lossOf(2, 3), 20);
    EXPECT_GT(t.lossOf(3.5, 5), 30);
    EXPECT_GT(Track::mean(t.step, 1, 2), 0.45);
    EXPECT_LT(Track::mean(t.step, 2.05, 2.95), 0.05);
    EXPECT_GT(Track::mean(t.step, 3.5, 5), 0.45);
    EXPECT_LT(Track::mean(t.gain, 1.5, 2), 0.15);
    EXPECT_GT(Track::mean(t.gain, 2.2, 2.9), 0.9);
}

TYPED_TEST(VekEcFullband, LearnsAChangedPathAnew) {
    const Track t = cancel<TypeParam>(scene(6, 9, 9, 2));
    EXPECT_GT(t.lossOf(1.5, 2), 30);
    EXPECT_LT(t.lossOf(2, 2.2), 10);
    EXPECT_GT(t.lossOf(5, 6), 30);
}

TYPED_TEST(VekEcFullband, ASilentFarEndStopsLearning) {
    Scene s = scene(1, 0, 1);
    std::fill(s.far.begin(), s.far.end(), 0.0);
    std::fill(s.echo.begin(), s.echo.end(), 0.0);
    const Track t = cancel<TypeParam>(s);
    EXPECT_EQ(0, Track::mean(t.step, 0, 1));
    EXPECT_EQ(1, std::round(Track::mean(t.gain, 0, 1) * 1000) / 1000);
}

// ---- Subbands: synthetic ones, each with its own short path ----

constexpr int kBands = 33;
constexpr int kSegments = 4;

template <class C>
struct Sub;
template <>
struct Sub<Vek32fc>
    : Controller<VeksSubbandControllerState_EC_32f, veksSubbandControllerGetSize_EC_32f,
                 veksSubbandControllerInit_EC_32f, veksSubbandControllerUpdate_EC_32f, veksSubbandController_EC_32f> {
    using Real = float;
    using Step = float;
    static constexpr double scale = 1;
};
template <>
struct Sub<Vek32sc>
    : Controller<VeksSubbandControllerState_EC_16s, veksSubbandControllerGetSize_EC_16s,
                 veksSubbandControllerInit_EC_16s, veksSubbandControllerUpdate_EC_16s, veksSubbandController_EC_16s> {
    using Real = int16_t;
    using Step = int32_t;
    static constexpr double scale = 32768;
};

template <class C>
using Bank = std::vector<std::vector<C>>;

template <class C>
std::vector<C*> rowsOf(Bank<C>& m) {
    std::vector<C*> rows;
    for (auto& row : m) {
        rows.push_back(row.data());
    }
    return rows;
}

void filter(Bank<Vek32fc>& x, Bank<Vek32fc>& c, std::vector<Vek32fc>& y) {
    for (int k = 0; k < kBands; k++) {
        y[k] = {0, 0};
        for (int s = 0; s < kSegments; s++) {
            y[k].re += x[s][k].re * c[s][k].re - x[s][k].im * c[s][k].im;
            y[k].im += x[s][k].re * c[s][k].im + x[s][k].im * c[s][k].re;
        }
    }
}
void filter(Bank<Vek32sc>& x, Bank<Vek32sc>& c, std::vector<Vek32sc>& y) {
    ASSERT_EQ(vekStsNoErr,
              veksFIRSubband_EC_32sc_Sfs(rowsOf(x).data(), rowsOf(c).data(), y.data(), kSegments, kBands, 15));
}
void learn(Bank<Vek32fc>& x, std::vector<Vek32fc>& e, Bank<Vek32fc>& c, const std::vector<float>& step) {
    const std::vector<double> wide(step.begin(), step.end());
    const double* steps[] = {wide.data()};
    Vek32fc* errors[] = {e.data()};
    ASSERT_EQ(vekStsNoErr, veksFIRSubbandAPCoeffUpdate_EC_32fc_I(steps, rowsOf(x).data(), errors, rowsOf(c).data(),
                                                                 kSegments, kBands, 1));
}
void learn(Bank<Vek32sc>& x, std::vector<Vek32sc>& e, Bank<Vek32sc>& c, const std::vector<int32_t>& step) {
    ASSERT_EQ(vekStsNoErr, veksFIRSubbandCoeffUpdate_EC_32sc_I(step.data(), rowsOf(x).data(), e.data(),
                                                               rowsOf(c).data(), kSegments, kBands, 16));
}

double powerOf(double re, double im) {
    return re * re + im * im;
}

// A filter in double precision that learns with half of the largest step in every frame, from the echo alone: what
// the bands can learn at best.
class IdealBands {
public:
    // Return loss in dB before the frame is learnt. x[s][k] is the far end, newest first.
    template <class C>
    double learn(const Bank<C>& x, const std::vector<std::complex<double>>& echo, double scale) {
        double whole = 0;
        double left = 1e-30;
        for (int k = 0; k < kBands; k++) {
            std::complex<double> error = echo[k];
            double power = 1e-12;
            for (int s = 0; s < kSegments; s++) {
                const std::complex<double> v(x[s][k].re / scale, x[s][k].im / scale);
                error -= v * m_filter[k * kSegments + s];
                power += std::norm(v);
            }
            for (int s = 0; s < kSegments; s++) {
                const std::complex<double> v(x[s][k].re / scale, x[s][k].im / scale);
                m_filter[k * kSegments + s] += 0.5 * error * std::conj(v) / power;
            }
            whole += std::norm(echo[k]);
            left += std::norm(error);
        }
        return 10 * std::log10(whole / left);
    }

private:
    std::vector<std::complex<double>> m_filter = std::vector<std::complex<double>>(kBands * kSegments);
};

// Frames 0..1999; the near end talks in 1000..1299. Told: return loss of the fixed filter, that of the ideal bands, and
// mean step times the history's power.
template <class C, class Observe>
void cancelBands(const Observe& observe, bool dt) {
    using F = Sub<C>;
    using Real = typename F::Real;
    std::mt19937 random(31);
    std::normal_distribution<double> normal;
    int size = 0;
    int sizeDt = 0;
    ASSERT_EQ(vekStsNoErr, F::size(kBands, 16, 1, kRate, &size));
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTGetSize_EC_16s(kBands, 16, 1, kRate, &sizeDt));
    Bytes memory(static_cast<size_t>(size) + 1);
    Bytes memoryDt(static_cast<size_t>(sizeDt) + 1);
    auto* state = reinterpret_cast<typename F::State*>(memory.data() + 1);
    auto* stateDt = reinterpret_cast<VeksSubbandControllerDTState_EC_16s*>(memoryDt.data() + 1);
    ASSERT_EQ(vekStsNoErr, F::init(state, kBands, 16, kSegments, kRate));
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTInit_EC_16s(stateDt, kBands, 16, kSegments, kRate));
    const auto to = [](double v) { return static_cast<decltype(C::re)>(F::scale == 1 ? v : std::lround(v * 32768)); };
    const auto toReal = [](double v) { return static_cast<Real>(F::scale == 1 ? v : std::lround(v * 32768)); };
    std::vector<std::complex<double>> path(kBands * kSegments);
    for (auto& p : path) {
        p = {0.1 * normal(random), 0.1 * normal(random)};
    }
    Bank<C> x(kSegments, std::vector<C>(kBands));
    Bank<C> adaptive = x;
    Bank<C> fixed = x;
    std::vector<C> sin(kBands);
    std::vector<C> echoA(kBands);
    std::vector<C> echoF(kBands);
    std::vector<C> errA(kBands);
    std::vector<C> errF(kBands);
    std::vector<typename F::Step> step(kBands);
    Vek32s filterPower = -32768;
    IdealBands ideal;
    for (int frame = 0; frame < 2000; frame++) {
        const bool talk = frame >= 1000 && frame < 1300;
        x.insert(x.begin(), std::vector<C>(kBands));
        x.pop_back();
        for (C& v : x[0]) {
            v = {to(normal(random)), to(normal(random))};
        }
        std::vector<Real> rin(16);
        std::vector<Real> sinTime(16);
        for (int i = 0; i < 16; i++) {
            rin[i] = toReal(0.1 * normal(random));
            sinTime[i] = toReal((talk ? 0.2 : 0.03) * normal(random));
        }
        std::vector<std::complex<double>> echo(kBands);
        std::vector<std::complex<double>> near(kBands);
        for (int k = 0; k < kBands; k++) {
            for (int s = 0; s < kSegments; s++) {
                const std::complex<double> v(x[s][k].re / F::scale, x[s][k].im / F::scale);
                echo[k] += v * path[k * kSegments + s];
            }
            near[k] = talk ? std::complex<double>(2 * normal(random), 2 * normal(random)) : 0;
            sin[k] = {to(echo[k].real() + near[k].real()), to(echo[k].imag() + near[k].imag())};
        }
        filter(x, fixed, echoF);
        filter(x, adaptive, echoA);
        double whole = 0;
        double left = 0;
        for (int k = 0; k < kBands; k++) {
            errA[k] = {sin[k].re - echoA[k].re, sin[k].im - echoA[k].im};
            errF[k] = {sin[k].re - echoF[k].re, sin[k].im - echoF[k].im};
            whole += std::norm(echo[k]);
            left += powerOf(errF[k].re / F::scale - near[k].real(), errF[k].im / F::scale - near[k].imag());
        }
        int isDt = -1;
        int noNlp = -1;
        int moved = -1;
        if constexpr (F::scale != 1) {
            if (dt) {
                ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTUpdate_EC_16s(rowsOf(x).data(), sin.data(), errF.data(),
                                                                            step.data(), &isDt, &noNlp, 0, stateDt));
            }
        }
        if (!dt) {
            ASSERT_EQ(vekStsNoErr,
                      F::update(rin.data(), sinTime.data(), rowsOf(x).data(), sin.data(), step.data(), state));
        }
        double relative = 0;
        for (int k = 0; k < kBands; k++) {
            EXPECT_GE(step[k], 0);
            const double unit = F::scale == 1 ? 1 : std::ldexp(1.0, -46) * 32768 * 32768;
            double power = 0;
            for (int s = 0; s < kSegments; s++) {
                power += powerOf(x[s][k].re / F::scale, x[s][k].im / F::scale);
            }
            EXPECT_LE(step[k] * unit * power, 0.5001);
            relative += step[k] * unit * power / kBands;
        }
        learn(x, errA, adaptive, step);
        Real gain = 0;
        if constexpr (F::scale != 1) {
            if (dt) {
                ASSERT_EQ(vekStsNoErr, veksSubbandControllerDT_EC_16s(errA.data(), errF.data(), rowsOf(adaptive).data(),
                                                                      rowsOf(fixed).data(), &filterPower, &moved, 0, 1,
                                                                      1, 0, stateDt));
            }
        }
        if (!dt) {
            ASSERT_EQ(vekStsNoErr, F::control(errA.data(), errF.data(), rowsOf(adaptive).data(), rowsOf(fixed).data(),
                                              &gain, state));
        }
        if (!dt) {
            EXPECT_GE(gain / F::scale, 0.0999) << frame;
            EXPECT_LE(gain / F::scale, 1) << frame;
        }
        observe(frame, 10 * std::log10(whole / (left + 1e-30)), ideal.learn(x, echo, F::scale), relative, isDt, noNlp,
                gain / F::scale);
    }
}

struct Phases {
    double loss[3] = {};
    double step[3] = {};
    double talk[3] = {};
    double noNlp[3] = {};
    double gain[3] = {};
    std::vector<double> curve, ideal;
    void operator()(int frame, double l, double best, double s, int isDt, int nlp, double g) {
        curve.push_back(l);
        ideal.push_back(best);
        const int phase = frame >= 900 && frame < 1000 ? 0 : frame >= 1050 && frame < 1250 ? 1 : frame >= 1800 ? 2 : -1;
        if (phase >= 0) {
            const double n = phase == 0 ? 100 : 200;
            loss[phase] += l / n;
            step[phase] += s / n;
            talk[phase] += isDt / n;
            noNlp[phase] += nlp / n;
            gain[phase] += g / n;
        }
    }
};

template <class C>
Phases phasesOf(bool dt) {
    Phases p;
    cancelBands<C>(std::ref(p), dt);
    return p;
}

void expectCancelled(const Phases& p) {
    EXPECT_GT(p.loss[0], 30);
    EXPECT_GT(p.loss[1], 15);
    EXPECT_GT(p.loss[2], 30);
    EXPECT_GT(p.step[0], 0.4);
    EXPECT_LT(p.step[1], 0.1);
    EXPECT_GT(p.step[2], 0.4);
    // The mean of ten frames is never far behind the ideal bands, up to 28 dB.
    const auto mean = [](const std::vector<double>& v, size_t frame) {
        return std::accumulate(v.begin() + static_cast<long>(frame), v.begin() + static_cast<long>(frame) + 10, 0.0) /
               10;
    };
    for (size_t frame = 40; frame < 980; frame++) {
        ASSERT_GE(mean(p.curve, frame), std::min(mean(p.ideal, frame - 40), 28.0) - 2) << frame;
    }
}

// The form that tells double talk has no gain.
void expectSuppressedButForTheNearEnd(const Phases& p) {
    EXPECT_LT(p.gain[0], 0.15);
    EXPECT_GT(p.gain[1], 0.9);
    EXPECT_LT(p.gain[2], 0.15);
}

TEST(VekEcSubbandControl, FloatFormLearnsHandsOverAndSurvivesDoubleTalk) {
    const Phases p = phasesOf<Vek32fc>(false);
    expectCancelled(p);
    expectSuppressedButForTheNearEnd(p);
}

TEST(VekEcSubbandControl, IntegerFormLearnsHandsOverAndSurvivesDoubleTalk) {
    const Phases p = phasesOf<Vek32sc>(false);
    expectCancelled(p);
    expectSuppressedButForTheNearEnd(p);
}

TEST(VekEcSubbandControl, DoubleTalkIsToldAndForbidsSuppression) {
    const Phases p = phasesOf<Vek32sc>(true);
    expectCancelled(p);
    EXPECT_LT(p.talk[0], 0.05);
    EXPECT_GT(p.talk[1], 0.95);
    EXPECT_LT(p.talk[2], 0.05);
    EXPECT_GT(p.noNlp[1], 0.95);
    EXPECT_LT(p.noNlp[2], 0.05);
}

// The gain after 400 frames of single talk in which the fixed filter leaves a share of the echo's amplitude.
template <class C>
double gainFor(double share) {
    using F = Sub<C>;
    using Real = typename F::Real;
    int size = 0;
    EXPECT_EQ(vekStsNoErr, F::size(4, 16, 1, 8000, &size));
    Bytes memory(static_cast<size_t>(size));
    auto* state = reinterpret_cast<typename F::State*>(memory.data());
    EXPECT_EQ(vekStsNoErr, F::init(state, 4, 16, 1, 8000));
    const auto bands = [](double v) { return std::vector<C>(4, C{static_cast<decltype(C::re)>(v * F::scale), 0}); };
    const std::vector<Real> far(16, static_cast<Real>(0.5 * F::scale));
    const std::vector<Real> near(16, static_cast<Real>(0.1 * F::scale));
    std::vector<C> history = bands(0.5);
    const std::vector<C> echo = bands(0.1);
    const std::vector<C> error = bands(0.1 * share);
    std::vector<C> coefs[2] = {bands(0.2), bands(0.2)};
    C* rows[] = {history.data()};
    C* adaptive[] = {coefs[0].data()};
    C* fixed[] = {coefs[1].data()};
    std::vector<typename F::Step> steps(4);
    Real gain = 0;
    for (int frame = 0; frame < 400; frame++) {
        EXPECT_EQ(vekStsNoErr, F::update(far.data(), near.data(), rows, echo.data(), steps.data(), state));
        EXPECT_EQ(vekStsNoErr, F::control(error.data(), error.data(), adaptive, fixed, &gain, state));
    }
    return gain / F::scale;
}

TEST(VekEcSubbandControl, TheGainTendsToTheAmplitudeThatTheFilterLeaves) {
    for (const double share : {0.2, 0.3, 0.6}) {
        EXPECT_NEAR(share, gainFor<Vek32fc>(share), 0.002);
        EXPECT_NEAR(share, gainFor<Vek32sc>(share), 0.002);
    }
    EXPECT_NEAR(0.1, gainFor<Vek32fc>(0.02), 0.002);
    EXPECT_NEAR(0.1, gainFor<Vek32sc>(0.02), 0.002);
}

TEST(VekEcSubbandControlDT, ASilentFarEndStopsLearningAndForbidsSuppression) {
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTGetSize_EC_16s(4, 16, 2, 8000, &size));
    Bytes memory(static_cast<size_t>(size));
    auto* state = reinterpret_cast<VeksSubbandControllerDTState_EC_16s*>(memory.data());
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTInit_EC_16s(state, 4, 16, 2, 8000));
    const std::vector<Vek32sc> silence(4);
    const Vek32sc* history[] = {silence.data(), silence.data()};
    std::vector<Vek32s> steps(4, 7);
    int talk = -1;
    int disabled = -1;
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTUpdate_EC_16s(history, silence.data(), silence.data(), steps.data(),
                                                                &talk, &disabled, 0, state));
    EXPECT_EQ(0, talk);
    EXPECT_EQ(1, disabled);
    EXPECT_EQ(std::vector<Vek32s>(4, 0), steps);
}

TEST(VekEcSubbandControlDT, LeavesTheStepsBelowTheStartAlone) {
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTGetSize_EC_16s(4, 16, 1, 8000, &size));
    Bytes memory(static_cast<size_t>(size));
    auto* state = reinterpret_cast<VeksSubbandControllerDTState_EC_16s*>(memory.data());
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTInit_EC_16s(state, 4, 16, 1, 8000));
    const std::vector<Vek32sc> far(4, Vek32sc{1 << 18, 0});
    const std::vector<Vek32sc> silence(4);
    const Vek32sc* history[] = {far.data()};
    std::vector<Vek32s> steps(4, -7);
    int talk = -1;
    int disabled = -1;
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTUpdate_EC_16s(history, silence.data(), silence.data(), steps.data(),
                                                                &talk, &disabled, 2, state));
    EXPECT_EQ(-7, steps[0]);
    EXPECT_EQ(-7, steps[1]);
    EXPECT_GT(steps[2], 0);
    EXPECT_EQ(steps[2], steps[3]);
    EXPECT_EQ(0, disabled);
}

TEST(VekEcSubbandControlDT, CopiesOnlyWhatIsEnabledFromTheStartOnWithinTheBound) {
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTGetSize_EC_16s(4, 16, 1, 8000, &size));
    Bytes memory(static_cast<size_t>(size));
    auto* state = reinterpret_cast<VeksSubbandControllerDTState_EC_16s*>(memory.data());
    const std::vector<Vek32sc> low(4, Vek32sc{10, 0});
    const std::vector<Vek32sc> high(4, Vek32sc{1000, 0});
    const auto run = [&](bool adaptiveBetter, int delta, int update, int adapt, Vek32s& power) {
        EXPECT_EQ(vekStsNoErr, veksSubbandControllerDTInit_EC_16s(state, 4, 16, 1, 8000));
        std::vector<Vek32sc> a(4, Vek32sc{32768, 0});
        std::vector<Vek32sc> f(4, Vek32sc{16384, 0});
        Vek32sc* ra[] = {a.data()};
        Vek32sc* rf[] = {f.data()};
        int moved = -1;
        EXPECT_EQ(vekStsNoErr, veksSubbandControllerDT_EC_16s(adaptiveBetter ? low.data() : high.data(),
                                                              adaptiveBetter ? high.data() : low.data(), ra, rf, &power,
                                                              &moved, delta, update, adapt, 1, state));
        EXPECT_EQ(32768, a[0].re);
        EXPECT_EQ(16384, f[0].re);
        EXPECT_EQ(moved == 1 ? 32768 : 16384, f[1].re);
        EXPECT_EQ(moved == 2 ? 16384 : 32768, a[3].re);
        return moved;
    };
    Vek32s power = -32768;
    EXPECT_EQ(0, run(true, 0, 0, 1, power));
    EXPECT_EQ(-320, power); // three coefficients of 1/2: -1.25 dB
    EXPECT_EQ(1, run(true, 0, 1, 0, power));
    EXPECT_EQ(1221, power); // three coefficients of 1: 4.77 dB
    EXPECT_EQ(0, run(false, 0, 1, 0, power));
    EXPECT_EQ(-320, power);
    EXPECT_EQ(2, run(false, 0, 1, 1, power));
    EXPECT_EQ(0, run(true, 256, 1, 0, power));  // 6 dB more is more than 1 dB
    EXPECT_EQ(1, run(true, 2000, 1, 0, power)); // but less than 7.8 dB
}

TEST(VekEcControlRefusals, ComeBeforeAnythingIsWritten) {
    int size = 5;
    EXPECT_EQ(vekStsNullPtrErr, veksFullbandControllerGetSize_EC_16s(8, 8, 8000, nullptr));
    EXPECT_EQ(vekStsSizeErr, veksFullbandControllerGetSize_EC_16s(0, 8, 8000, &size));
    EXPECT_EQ(vekStsSizeErr, veksFullbandControllerGetSize_EC_32f(8, 4097, 8000, &size));
    EXPECT_EQ(vekStsBadArgErr, veksFullbandControllerGetSize_EC_32f(8, 8, 44100, &size));
    EXPECT_EQ(vekStsSizeErr, veksSubbandControllerGetSize_EC_16s(0, 8, 1, 8000, &size));
    EXPECT_EQ(vekStsSizeErr, veksSubbandControllerGetSize_EC_32f(33, 8, 257, 8000, &size));
    EXPECT_EQ(vekStsBadArgErr, veksSubbandControllerDTGetSize_EC_16s(33, 8, 1, 1, &size));
    EXPECT_EQ(5, size);
    alignas(32) Vek8u memory[4096] = {};
    auto* fc = reinterpret_cast<VeksFullbandControllerState_EC_16s*>(memory);
    auto* fcF = reinterpret_cast<VeksFullbandControllerState_EC_32f*>(memory);
    auto* sc = reinterpret_cast<VeksSubbandControllerState_EC_16s*>(memory);
    auto* scF = reinterpret_cast<VeksSubbandControllerState_EC_32f*>(memory);
    auto* dt = reinterpret_cast<VeksSubbandControllerDTState_EC_16s*>(memory);
    EXPECT_EQ(vekStsNullPtrErr, veksFullbandControllerInit_EC_16s(nullptr, 8, 8, 8000));
    EXPECT_EQ(vekStsSizeErr, veksFullbandControllerInit_EC_32f(fcF, 8, 0, 8000));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandControllerInit_EC_32f(nullptr, 33, 8, 1, 8000));
    EXPECT_EQ(vekStsBadArgErr, veksSubbandControllerInit_EC_16s(sc, 33, 8, 1, 0));
    EXPECT_EQ(vekStsSizeErr, veksSubbandControllerDTInit_EC_16s(dt, 33, 0, 1, 8000));
    const std::vector<int16_t> x(64, 1);
    const std::vector<float> xf(64, 1);
    int16_t step[8] = {5};
    float stepF[64] = {5};
    int32_t stepI[64] = {5};
    std::vector<Vek32sc> c(64);
    std::vector<Vek32fc> cf(64);
    Vek32sc* rows[] = {c.data()};
    Vek32fc* rowsF[] = {cf.data()};
    int a = 5;
    int b = 5;
    Vek32s p = 5;
    EXPECT_EQ(vekStsStateErr, veksFullbandControllerUpdate_EC_16s(&x[32], &x[32], step, fc));
    EXPECT_EQ(vekStsStateErr, veksFullbandControllerUpdate_EC_32f(&xf[32], &xf[32], stepF, fcF));
    EXPECT_EQ(vekStsStateErr, veksFullbandController_EC_16s(&x[0], &x[0], step, step, step, fc));
    EXPECT_EQ(vekStsStateErr, veksFullbandController_EC_32f(&xf[0], &xf[0], stepF, stepF, stepF, fcF));
    EXPECT_EQ(vekStsStateErr, veksSubbandControllerUpdate_EC_16s(&x[0], &x[0], rows, c.data(), stepI, sc));
    EXPECT_EQ(vekStsStateErr, veksSubbandControllerUpdate_EC_32f(&xf[0], &xf[0], rowsF, cf.data(), stepF, scF));
    EXPECT_EQ(vekStsStateErr, veksSubbandController_EC_16s(c.data(), c.data(), rows, rows, step, sc));
    EXPECT_EQ(vekStsStateErr, veksSubbandController_EC_32f(cf.data(), cf.data(), rowsF, rowsF, stepF, scF));
    EXPECT_EQ(vekStsStateErr, veksSubbandControllerDTUpdate_EC_16s(rows, c.data(), c.data(), stepI, &a, &b, 0, dt));
    EXPECT_EQ(vekStsStateErr, veksSubbandControllerDT_EC_16s(c.data(), c.data(), rows, rows, &p, &a, 0, 1, 1, 0, dt));
    EXPECT_EQ(vekStsNullPtrErr, veksFullbandControllerUpdate_EC_16s(nullptr, &x[32], step, fc));
    EXPECT_EQ(vekStsNullPtrErr, veksFullbandController_EC_32f(&xf[0], &xf[0], stepF, nullptr, stepF, fcF));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandControllerUpdate_EC_16s(&x[0], &x[0], nullptr, c.data(), stepI, sc));
    EXPECT_EQ(vekStsNullPtrErr, veksSubbandController_EC_32f(cf.data(), cf.data(), rowsF, rowsF, nullptr, scF));
    ASSERT_EQ(vekStsNoErr, veksSubbandControllerDTInit_EC_16s(dt, 33, 16, 1, 8000));
    EXPECT_EQ(vekStsSizeErr, veksSubbandControllerDTUpdate_EC_16s(rows, c.data(), c.data(), stepI, &a, &b, 33, dt));
    EXPECT_EQ(vekStsNullPtrErr,
              veksSubbandControllerDTUpdate_EC_16s(rows, c.data(), c.data(), stepI, nullptr, &b, 0, dt));
    EXPECT_EQ(vekStsSizeErr, veksSubbandControllerDT_EC_16s(c.data(), c.data(), rows, rows, &p, &a, 0, 1, 1, -1, dt));
    EXPECT_EQ(vekStsRangeErr, veksSubbandControllerDT_EC_16s(c.data(), c.data(), rows, rows, &p, &a, -1, 1, 1, 0, dt));
    EXPECT_EQ(5, step[0]);
    EXPECT_EQ(5, stepF[0]);
    EXPECT_EQ(5, stepI[0]);
    EXPECT_EQ(5, a);
    EXPECT_EQ(5, b);
    EXPECT_EQ(5, p);
}

} // namespace
