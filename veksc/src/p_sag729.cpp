// Post filters, tilt compensation, quantiser of line spectral pairs and analysis of G.729 and its annexes A and B.
#include "vkc.h"

namespace {

vkVector pSrcLsp, pSrcDst, pDstQLsp, pDstQLspIndex, pSrc, pSrcLpc, pDst, pSrcSpch;
krStepIterator<int> len;
Vek16s pResultVoice, pResultAutoCorrExp;
Vek32s pDstAutoCorr[13];

constexpr int subframe = 40;
constexpr int order = 10;
constexpr int excitation = 194;
constexpr int past = 152;
constexpr Vek16s valDelay = 60;
constexpr Vek16s frameType = 1;

class TimSAG_729 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "").setList({m_autoCorr ? 240 : m_quant ? 10 : m_tilt ? 20 : 40});
        // A name without a type word has vectors of 16 bits too.
        initVectors({&pSrcLsp, &pSrcDst, &pDstQLsp, &pDstQLspIndex, &pSrc, &pSrcLpc, &pDst, &pSrcSpch}, vk16s);
        return walk({&len});
    }

    bool makeData() override {
        if (m_autoCorr) {
            return pSrcSpch.createVector(m_grid.room(len), setRand, -2048, 2048);
        }
        if (m_tilt) {
            // One sample of the subframe before.
            return pSrc.createVector(m_grid.room(len), setZero, 0, 0) &&
                   pSrcDst.createVector(subframe + 1, setRand, -1024, 1024);
        }
        if (m_quant) {
            if (!pSrcLsp.createVector(m_grid.room(len), setZero, 0, 0) ||
                !pSrcDst.createVector(subframe, setRand, -1024, 1024) ||
                !pDstQLsp.createVector(m_grid.room(len), setZero, 0, 0) ||
                !pDstQLspIndex.createVector(2, setZero, 0, 0)) {
                return false;
            }
            setDataLsp();
            return true;
        }
        if (!pSrc.createVector(order + subframe, setOne, 0, 0) || !pSrcLpc.createVector(order + 1, setZero, 0, 0) ||
            !pSrcDst.createVector(excitation, setOne, 0, 0) || !pDst.createVector(m_grid.room(len), setZero, 0, 0)) {
            return false;
        }
        setDataLpc();
        return true;
    }

    double getDivisor() override { return len.value(); }

    virtual void setDataLsp() {
        static constexpr Vek16s lsp[] = {31441, 27567, 21458, 13612, 4664, -4662, -13612, -21458, -27566, -31440};
        std::memcpy(pSrcLsp.m_16s, lsp, sizeof lsp);
    }

    virtual void setDataLpc() {
        static constexpr Vek16s lpc[] = {4096, 852, 825, 441, 159, -209, -411, -420, -494, -593, -711};
        std::memcpy(pSrcLpc.m_16s, lpc, sizeof lpc);
    }

private:
    const bool m_autoCorr = m_func.contains("veksAutoCorr_G729B");
    const bool m_tilt = !m_autoCorr && m_func.contains("veksTiltCompensation_G729");
    const bool m_quant = !m_autoCorr && !m_tilt && m_func.contains("veksLSPQuant_G729_16s");
};

} // namespace

VK_REG(TimSAG_729, veksTiltCompensation_G729A_16s, veksTiltCompensation_G729A_16s(pSrc.m_16s, pSrcDst.m_16s + 1))
VK_REG(TimSAG_729, veksTiltCompensation_G729_16s, veksTiltCompensation_G729_16s(pSrc.m_16s, pSrcDst.m_16s + 1))
VK_REG(TimSAG_729, veksLSPQuant_G729_16s,
       veksLSPQuant_G729_16s(pSrcLsp.m_16s, pSrcDst.m_16s, pDstQLsp.m_16s, pDstQLspIndex.m_16s))
VK_REG(TimSAG_729, veksShortTermPostFilter_G729_16s,
       veksShortTermPostFilter_G729_16s(pSrcLpc.m_16s, pSrc.m_16s, pSrcDst.m_16s + order, pDst.m_16s))
VK_REG(TimSAG_729, veksShortTermPostFilter_G729A_16s,
       veksShortTermPostFilter_G729A_16s(pSrcLpc.m_16s, pSrc.m_16s, pSrcDst.m_16s + order))
VK_REG(TimSAG_729, veksLongTermPostFilter_G729B_16s,
       veksLongTermPostFilter_G729B_16s(valDelay, pSrc.m_16s + order, pSrcLpc.m_16s, pSrcDst.m_16s, pDst.m_16s,
                                        &pResultVoice, frameType))
VK_REG(TimSAG_729, veksLongTermPostFilter_G729A_16s,
       veksLongTermPostFilter_G729A_16s(valDelay, pSrc.m_16s + order, pSrcLpc.m_16s, pSrcDst.m_16s, pDst.m_16s))
VK_REG(TimSAG_729, veksLongTermPostFilter_G729_16s,
       veksLongTermPostFilter_G729_16s(16384, valDelay, pSrcDst.m_16s + past, pDst.m_16s, &pResultVoice))
VK_REG(TimSAG_729, veksAutoCorr_G729B, veksAutoCorr_G729B(pSrcSpch.m_16s, &pResultAutoCorrExp, pDstAutoCorr))
