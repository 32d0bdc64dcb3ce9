// Voice activity and the histories of discontinuous transmission of the wide-band codec.
#include "vkc.h"

namespace {

vkVector pSrcSpch;
vkVector pSrcIsp;
vkVector pSrcDstIspBuffer;
vkVector pSrcDstLogEnergyBuffer;
vkVector pToneFlag;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> len;
vkcGrid grid;
Vek16s pUpdateIndex;
Vek16s pResultVadFlag;
char* pSrcDstVadState;
int vadSize;

constexpr int spectrum = 16;
constexpr int places = 9;

class TimVADWB : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }

private:
    bool m_activity = false;
};

bool TimVADWB::canStart() {
    m_activity = m_func.contains("VAD");
    vkcRebuild(len, "").setList({256});
    if (m_func.contains("EncDTXBuffer")) {
        vkcRebuild(mode, "BitRate");
        for (const VekSpchBitRate rate :
             {VEK_SPCHBR_6600, VEK_SPCHBR_8850, VEK_SPCHBR_12650, VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
              VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850, VEK_SPCHBR_DTX}) {
            mode.add(rate);
            mode.addValidation(rate);
        }
        grid.begin({&mode, &len});
    } else {
        grid.begin({&len});
    }
    for (vkVector* vector : {&pSrcSpch, &pSrcIsp, &pSrcDstIspBuffer, &pSrcDstLogEnergyBuffer, &pToneFlag}) {
        vector->init(m_func, vkArg::src);
    }
    return true;
}

bool TimVADWB::makeData() {
    if (!m_activity) {
        pUpdateIndex = 0;
        return pSrcSpch.createVector(grid.room(len), setRand, 0, 0) && pSrcIsp.createVector(spectrum, setRand, 0, 0) &&
               pSrcDstIspBuffer.createVector(places * spectrum, setRand, 0, 0) &&
               pSrcDstLogEnergyBuffer.createVector(places, setRand, 0, 0);
    }
    if (!vkcDone(veksVADGetSize_AMRWB_16s(&vadSize))) {
        return false;
    }
    pSrcDstVadState = static_cast<char*>(krMalloc(vadSize, 0, 0, MEM_OBJECT_IS_BUFFER));
    return pSrcDstVadState != nullptr && vkcDone(veksVADInit_AMRWB_16s(pSrcDstVadState)) &&
           pSrcSpch.createVector(grid.room(len), setRand, -32768, 32767) &&
           pToneFlag.createVector(1, setRand, 0, 32767);
}

void TimVADWB::flushData() {
    krFree(pSrcDstVadState);
    pSrcDstVadState = nullptr;
    for (vkVector* vector : {&pToneFlag, &pSrcDstLogEnergyBuffer, &pSrcDstIspBuffer, &pSrcIsp, &pSrcSpch}) {
        vector->deleteVector();
    }
}

} // namespace

VK_REG(TimVADWB, veksDecDTXBuffer_AMRWB_16s,
       veksDecDTXBuffer_AMRWB_16s(pSrcSpch.m_16s, pSrcIsp.m_16s, &pUpdateIndex, pSrcDstIspBuffer.m_16s,
                                  pSrcDstLogEnergyBuffer.m_16s))
VK_REG(TimVADWB, veksEncDTXBuffer_AMRWB_16s,
       veksEncDTXBuffer_AMRWB_16s(pSrcSpch.m_16s, pSrcIsp.m_16s, &pUpdateIndex, pSrcDstIspBuffer.m_16s,
                                  pSrcDstLogEnergyBuffer.m_16s, mode.value()))
VK_REG(TimVADWB, veksVAD_AMRWB_16s,
       veksVAD_AMRWB_16s(pSrcSpch.m_16s, pSrcDstVadState, pToneFlag.m_16s, &pResultVadFlag))
