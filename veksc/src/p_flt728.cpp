// Filters of G.728: weighting, synthesis, and both in cascade.
#include "vkc.h"

namespace {

vkVector pSrc, pCoeff, pDst, pDstWgtSpeech, pSrcDstExc;
krStepIterator<int> excSfs, len;
int dataSize;
VeksIIRState_G728* pMemIIR;
VeksSynthesisFilterState_G728* pMemSynt;
VeksCombinedFilterState_G728* pMem;
Vek16s speechSfs;
Vek16s* const pSpeechSfs = &speechSfs;

constexpr int vectorLength = 5;
constexpr int weights = 20;

class TimFlt728 : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lengt").setList({m_iir ? 5 : 50});
        initVectors({&pSrc, &pCoeff, &pDst, &pDstWgtSpeech, &pSrcDstExc}, vkArg::src);
        const VekStatus status = m_iir         ? veksIIR16sGetStateSize_G728_16s(&dataSize)
                                 : m_synthesis ? veksSynthesisFilterGetStateSize_G728_16s(&dataSize)
                                               : veksCombinedFilterGetStateSize_G728_16s(&dataSize);
        if (status != vekStsNoErr) {
            return false;
        }
        if (m_synthesis || m_func.contains("ZeroState")) {
            vkcRebuild(excSfs, "excSfs").set(0, 15, 5, '+');
            return walk({&excSfs, &len});
        }
        vkcFix(excSfs, 1);
        return walk({&len});
    }

    bool makeData() override {
        return createState() && pSrc.createVector(m_grid.room(len), setRand, -2048, 2048) &&
               pCoeff.createVector(weights, setRand, -2048, 2048) && pDst.createVector(vectorLength, setZero, 0, 0) &&
               pDstWgtSpeech.createVector(m_grid.room(len), setZero, 0, 0) &&
               pSrcDstExc.createVector(vectorLength, setRand, -256, 256);
    }

    double getDivisor() override { return m_iir ? len.value() : vectorLength; }

private:
    bool createState() {
        if (m_iir) {
            return hold(pMemIIR, veksMalloc_8u(dataSize), veksFree) && vkcDone(veksIIR16sInit_G728_16s(pMemIIR));
        }
        if (m_synthesis) {
            return hold(pMemSynt, veksMalloc_8u(dataSize), veksFree) &&
                   vkcDone(veksSynthesisFilterInit_G728_16s(pMemSynt));
        }
        return hold(pMem, veksMalloc_8u(dataSize), veksFree) && vkcDone(veksCombinedFilterInit_G728_16s(pMem));
    }

    const bool m_iir = m_func.contains("IIR16s");
    const bool m_synthesis = m_func.contains("SyntesisFilter");
};

} // namespace

VK_REG(TimFlt728, veksIIR16s_G728_16s,
       veksIIR16s_G728_16s(pCoeff.m_16s, pSrc.m_16s, pDstWgtSpeech.m_16s, len.value(), pMemIIR))
VK_REG(TimFlt728, veksSyntesisFilterZeroInput_G728_16s,
       veksSyntesisFilterZeroInput_G728_16s(pSrc.m_16s, pSrcDstExc.m_16s, excSfs.value(), pDst.m_16s, pSpeechSfs,
                                            pMemSynt))
VK_REG(TimFlt728, veksCombinedFilterZeroState_G728_16s,
       veksCombinedFilterZeroState_G728_16s(pSrc.m_16s, pCoeff.m_16s, pSrcDstExc.m_16s, excSfs.value(), pDst.m_16s,
                                            pSpeechSfs, pMem))
VK_REG(TimFlt728, veksCombinedFilterZeroInput_G728_16s,
       veksCombinedFilterZeroInput_G728_16s(pSrc.m_16s, pCoeff.m_16s, pDst.m_16s, pMem))
