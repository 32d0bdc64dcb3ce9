// Linear prediction and high-pass filter of the real-time audio codec.
#include "vkc.h"

#include <iterator>

#include <cmath>

namespace {

vkVector pSrc, pSrcAutoCorr, pDstLPC, pDstRC, pDst, pMem;
krStepIterator<int> hpfOrder, step, len;
int order;
VekPCMFrequency freq;

struct Stage {
    int order;
    VekPCMFrequency freq;
};
constexpr Stage stages[] = {{5, VEK_PCM_FREQ_8000},  {5, VEK_PCM_FREQ_16000}, {5, VEK_PCM_FREQ_22050},
                            {5, VEK_PCM_FREQ_32000}, {4, VEK_PCM_FREQ_16000}, {4, VEK_PCM_FREQ_22050},
                            {4, VEK_PCM_FREQ_32000}};

class TimFILT_RTAFP : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcFix(hpfOrder, 4);
        vkcFix(step, 0);
        vkcFix(len, 80);
        initVectors({&pSrc, &pSrcAutoCorr, &pDstLPC, &pDstRC, &pDst, &pMem}, vkArg::src);
        if (m_levinson) {
            vkcRebuild(hpfOrder, "hpfOrder").set(4, 10, 2, '+');
            return walk({&hpfOrder});
        }
        vkcRebuild(step, "stage").set(0, 6, 1, '+');
        vkcRebuild(len, "Lenght").set(80, 320, 80, '+');
        return walk({&step, &len});
    }

    bool makeData() override {
        if (!vkcCounts(step, std::size(stages))) {
            return false;
        }
        // Of order n there are n + 1 autocorrelations and coefficients.
        const long long n = vkcSize(hpfOrder);
        const bool created =
            m_levinson
                ? pSrc.createVector(n, setRand, -100, 100) && pSrcAutoCorr.createVector(n + 1, setRand, -100, 100) &&
                      pDstLPC.createVector(n + 1, setZero, 0, 0) && pDstRC.createVector(n, setZero, 0, 0)
                : pSrc.createVector(len.value(), setRand, -100, 100) && pDst.createVector(len.value(), setZero, 0, 0) &&
                      pMem.createVector(12, setZero, 0, 0);
        if (created) {
            setData();
        }
        return created;
    }

    double getDivisor() override { return m_levinson ? hpfOrder.value() : len.value(); }

private:
    virtual void setData() {
        order = stages[step.value()].order;
        freq = stages[step.value()].freq;
        if (m_levinson) {
            // Numbers at random are autocorrelations after a first one above all of them together, on either side.
            Vek32f sum = 1;
            for (int i = 1; i <= hpfOrder.value(); ++i) {
                sum += 2 * std::fabs(pSrcAutoCorr.m_32f[i]);
            }
            pSrcAutoCorr.m_32f[0] = sum;
        }
    }

    const bool m_levinson = m_func.contains("veksLevinsonDurbin_RTA_32f");
};

} // namespace

VK_REG(TimFILT_RTAFP, veksLevinsonDurbin_RTA_32f,
       veksLevinsonDurbin_RTA_32f(pSrcAutoCorr.m_32f, pDstLPC.m_32f, pDstRC.m_32f, hpfOrder.value()))
VK_REG(TimFILT_RTAFP, veksHighPassFilter_RTA_32f,
       veksHighPassFilter_RTA_32f(pSrc.m_32f, pDst.m_32f, len.value(), order, freq, pMem.m_32f))
