// Line spectral pairs of the real-time audio codec.
#include "vkc.h"

namespace {

vkVector pSrc, pSrcAutoCorr, pDstRC, pSrcLPC, pDstLSP, pSrcLSP, pDstLPC;
krStepIterator<int> order;

class LSFLPC_RTA_32f : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(order, "Order").set(4, 16, 2, '+');
        initVectors({&pSrc, &pSrcAutoCorr, &pDstRC, &pSrcLPC, &pDstLSP, &pSrcLSP, &pDstLPC}, vkArg::src);
        return walk({&order});
    }

    bool makeData() override {
        // Of order n there are n + 1 autocorrelations and coefficients.
        const long long n = vkcSize(order);
        if (m_func.contains("veksLPCToLSP_RTA_32f")) {
            return pSrc.createVector(n, setRand, -150, 150) && pSrcAutoCorr.createVector(n + 1, setZero, 0, 0) &&
                   pDstRC.createVector(n, setZero, 0, 0) && pSrcLPC.createVector(n + 1, setZero, 0, 0) &&
                   pDstLSP.createVector(n, setZero, 0, 0) && setData();
        }
        return pSrcLSP.createVector(n, setRand, -150, 150) && pDstLPC.createVector(n + 1, setZero, 0, 0);
    }

    double getDivisor() override { return order.value(); }

private:
    // The prediction of the random signal.
    virtual bool setData() {
        const int n = order.value();
        // Whether the library takes the order shows before the sums are worked out.
        pSrcAutoCorr.m_32f[0] = 1;
        if (!vkcDone(veksLevinsonDurbin_RTA_32f(pSrcAutoCorr.m_32f, pSrcLPC.m_32f, pDstRC.m_32f, n))) {
            return false;
        }
        pSrcAutoCorr.m_32f[0] = 0;
        for (int lag = 0; lag <= n; ++lag) {
            for (int i = lag; i < n; ++i) {
                pSrcAutoCorr.m_32f[lag] += pSrc.m_32f[i] * pSrc.m_32f[i - lag];
            }
        }
        return vkcDone(veksLevinsonDurbin_RTA_32f(pSrcAutoCorr.m_32f, pSrcLPC.m_32f, pDstRC.m_32f, n));
    }
};

} // namespace

VK_REG(LSFLPC_RTA_32f, veksLPCToLSP_RTA_32f, veksLPCToLSP_RTA_32f(pSrcLPC.m_32f, pDstLSP.m_32f, order.value()))
VK_REG(LSFLPC_RTA_32f, veksLSPToLPC_RTA_32f, veksLSPToLPC_RTA_32f(pSrcLSP.m_32f, pDstLPC.m_32f, order.value()))
