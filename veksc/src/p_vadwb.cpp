// Voice activity and the histories of discontinuous transmission of the wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrcSpch, pSrcIsp, pSrcDstIspBuffer, pSrcDstLogEnergyBuffer, pToneFlag;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> len;
Vek16s pUpdateIndex, pResultVadFlag;
char* pSrcDstVadState;
int vadSize;

constexpr int spectrum = 16;
constexpr int places = 9;

class TimVADWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "").setList({256});
        initVectors({&pSrcSpch, &pSrcIsp, &pSrcDstIspBuffer, &pSrcDstLogEnergyBuffer, &pToneFlag}, vkArg::src);
        if (m_func.contains("EncDTXBuffer")) {
            vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesAMRWB, vkcSilence);
            return walk({&mode, &len});
        }
        return walk({&len});
    }

    bool makeData() override {
        if (!m_func.contains("VAD")) {
            pUpdateIndex = 0;
            return pSrcSpch.createVector(m_grid.room(len), setRand, 0, 0) &&
                   pSrcIsp.createVector(spectrum, setRand, 0, 0) &&
                   pSrcDstIspBuffer.createVector(places * spectrum, setRand, 0, 0) &&
                   pSrcDstLogEnergyBuffer.createVector(places, setRand, 0, 0);
        }
        if (!vkcDone(veksVADGetSize_AMRWB_16s(&vadSize))) {
            return false;
        }
        return hold(pSrcDstVadState, krMalloc(vadSize, 0, 0, MEM_OBJECT_IS_BUFFER), krFree) &&
               vkcDone(veksVADInit_AMRWB_16s(pSrcDstVadState)) &&
               pSrcSpch.createVector(m_grid.room(len), setRand, -32768, 32767) &&
               pToneFlag.createVector(1, setRand, 0, 32767);
    }

    double getDivisor() override { return len.value(); }
};

} // namespace

VK_REG(TimVADWB, veksDecDTXBuffer_AMRWB_16s,
       veksDecDTXBuffer_AMRWB_16s(pSrcSpch.m_16s, pSrcIsp.m_16s, &pUpdateIndex, pSrcDstIspBuffer.m_16s,
                                  pSrcDstLogEnergyBuffer.m_16s))
VK_REG(TimVADWB, veksEncDTXBuffer_AMRWB_16s,
       veksEncDTXBuffer_AMRWB_16s(pSrcSpch.m_16s, pSrcIsp.m_16s, &pUpdateIndex, pSrcDstIspBuffer.m_16s,
                                  pSrcDstLogEnergyBuffer.m_16s, mode.value()))
VK_REG(TimVADWB, veksVAD_AMRWB_16s,
       veksVAD_AMRWB_16s(pSrcSpch.m_16s, pSrcDstVadState, pToneFlag.m_16s, &pResultVadFlag))
