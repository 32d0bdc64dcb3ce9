// Discontinuous transmission of AMR: histories of both sides, the encoder's handler, the frame of silence.
#include "vkc.h"

namespace {

vkVector pSrcSpch, pSrc, pSrcDstBuffer, pSrcDstLogEnergyBuffer, pSrcLspBuffer, pSrcLogEnergyBuffer, pSrcDstDtxQLsfIndex,
    pSrcDstPredQErr, pSrcDstPredQErrMR122, pTmp_1, pTmp_2, pTmp_3;
krStepIterator<short> Flag;
Vek16s pValResultUpdateIndex, pValResultLogEnergyIndex, pValResultDtxLsfRefIndex, pValResultHangOverCount,
    pValResultDtxElapseCount;
VekSpchBitRate pValResultUsedMode;
Vek16s pResultSidFlag;
int dataSize_1, dataSize_2, dataSize_3;

constexpr int len = 160;
constexpr int spectrum = 10;
constexpr int history = 80;

class TimAdtx : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(Flag, "").setList({1});
        initVectors({&pSrcSpch, &pSrc, &pSrcDstBuffer, &pSrcDstLogEnergyBuffer, &pSrcLspBuffer, &pSrcLogEnergyBuffer,
                     &pSrcDstDtxQLsfIndex, &pSrcDstPredQErr, &pSrcDstPredQErrMR122, &pTmp_1, &pTmp_2, &pTmp_3},
                    vkArg::src);
        return walk({&Flag});
    }

    bool makeData() override {
        pValResultUpdateIndex = 7;
        pValResultLogEnergyIndex = 1;
        pValResultDtxLsfRefIndex = 1;
        pValResultHangOverCount = 0;
        pValResultDtxElapseCount = 0;
        pValResultUsedMode = VEK_SPCHBR_12200;
        return m_handler || (m_buffer ? createBufferData() : createSidData());
    }

    double getDivisor() override { return m_handler ? len : m_buffer ? spectrum : history; }

private:
    bool createBufferData() {
        dataSize_1 = history * vkVector::item(m_func);
        dataSize_2 = history * vkVector::item(m_func);
        return pSrcSpch.createVector(len, setRand, -2048, 2048) && pSrc.createVector(spectrum, setOne, 0, 0) &&
               pSrcDstBuffer.createVector(history, setZero, 0, 0) &&
               pSrcDstLogEnergyBuffer.createVector(history, setZero, 0, 0) &&
               pTmp_1.createVector(history, setZero, 0, 0) && pTmp_2.createVector(history, setOne, 0, 0);
    }

    bool createSidData() {
        dataSize_1 = 3 * vkVector::item(m_func);
        dataSize_2 = 4 * vkVector::item(m_func);
        dataSize_3 = 4 * vkVector::item(m_func);
        return pSrcLspBuffer.createVector(history, setZero, 0, 0) &&
               pSrcLogEnergyBuffer.createVector(8, setRand, -2048, 2048) &&
               pSrcDstDtxQLsfIndex.createVector(3, setZero, 0, 0) && pSrcDstPredQErr.createVector(4, setZero, 0, 0) &&
               pSrcDstPredQErrMR122.createVector(4, setZero, 0, 0) && pTmp_1.createVector(3, setRand, 0, 200) &&
               pTmp_2.createVector(4, setRand, -2048, 2048) && pTmp_3.createVector(4, setRand, -2048, 2048);
    }

    const bool m_handler = m_func.contains("veksEncDTXHandler_GSMAMR_16s");
    const bool m_buffer = m_func.contains("Buffer");
};

void restoreBuffers() {
    vkcRestore(pSrcDstBuffer.m_16s, pTmp_1.m_16s, dataSize_1);
    vkcRestore(pSrcDstLogEnergyBuffer.m_16s, pTmp_2.m_16s, dataSize_2);
}

void restoreSid() {
    vkcRestore(pSrcDstDtxQLsfIndex.m_16s, pTmp_1.m_16s, dataSize_1);
    vkcRestore(pSrcDstPredQErr.m_16s, pTmp_2.m_16s, dataSize_2);
    vkcRestore(pSrcDstPredQErrMR122.m_16s, pTmp_3.m_16s, dataSize_3);
}

} // namespace

VK_REG_I(TimAdtx, veksDecDTXBuffer_GSMAMR_16s,
         veksDecDTXBuffer_GSMAMR_16s(pSrcSpch.m_16s, pSrc.m_16s, &pValResultUpdateIndex, pSrcDstBuffer.m_16s,
                                     pSrcDstLogEnergyBuffer.m_16s),
         restoreBuffers())
VK_REG_I(TimAdtx, veksEncDTXBuffer_GSMAMR_16s,
         veksEncDTXBuffer_GSMAMR_16s(pSrcSpch.m_16s, pSrc.m_16s, &pValResultUpdateIndex, pSrcDstBuffer.m_16s,
                                     pSrcDstLogEnergyBuffer.m_16s),
         restoreBuffers())
VK_REG(TimAdtx, veksEncDTXHandler_GSMAMR_16s,
       veksEncDTXHandler_GSMAMR_16s(&pValResultHangOverCount, &pValResultDtxElapseCount, &pValResultUsedMode,
                                    &pResultSidFlag, Flag.value()))
VK_REG_I(TimAdtx, veksEncDTXSID_GSMAMR_16s,
         veksEncDTXSID_GSMAMR_16s(pSrcLspBuffer.m_16s, pSrcLogEnergyBuffer.m_16s, &pValResultLogEnergyIndex,
                                  &pValResultDtxLsfRefIndex, pSrcDstDtxQLsfIndex.m_16s, pSrcDstPredQErr.m_16s,
                                  pSrcDstPredQErrMR122.m_16s, static_cast<Vek16s>(Flag.value() & 0xffff)),
         restoreSid())
