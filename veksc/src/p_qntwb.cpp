// Quantisers of the wide-band codec's spectra, in speech and in silence.
#include "vkc.h"

namespace {

vkVector pSrcIdxs;
vkVector pSrcPrevQntIsf;
vkVector pSrcDstIsfMemory;
vkVector pSrcDstResidual;
vkVector pDstQIsf;
vkVector pSrcIsf;
vkVector pDstQIsfIndex;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> bfi;
vkcGrid grid;

constexpr int spectrum = 16;

void initVectors(const vkFunc& func) {
    for (vkVector* vector :
         {&pSrcIdxs, &pSrcPrevQntIsf, &pSrcDstIsfMemory, &pSrcDstResidual, &pDstQIsf, &pSrcIsf, &pDstQIsfIndex}) {
        vector->init(func, vkArg::src);
    }
}

bool createSpectrum(int indices) {
    return pSrcIdxs.createVector(indices, setRand, 0, 32) && pDstQIsf.createVector(spectrum, setZero, 0, 0) &&
           pSrcIsf.createVector(spectrum, setRand, -2048, 2048) && pDstQIsfIndex.createVector(indices, setZero, 0, 0);
}

void deleteVectors() {
    for (vkVector* vector :
         {&pDstQIsfIndex, &pSrcIsf, &pDstQIsf, &pSrcDstResidual, &pSrcDstIsfMemory, &pSrcPrevQntIsf, &pSrcIdxs}) {
        vector->deleteVector();
    }
}

class TimQNTWB : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return spectrum; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimQNTWB::canStart() {
    vkcRebuild(mode, "BitRate");
    for (const VekSpchBitRate rate : {VEK_SPCHBR_6600, VEK_SPCHBR_8850}) {
        mode.add(rate);
        mode.addValidation(rate);
    }
    if (m_func.contains("Decode")) {
        vkcRebuild(bfi, "Bfi").set(0, 1, 1, '+');
    } else {
        vkcFix(bfi, 0);
    }
    grid.begin({&mode, &bfi});
    initVectors(m_func);
    return true;
}

bool TimQNTWB::makeData() {
    return pSrcPrevQntIsf.createVector(spectrum, setRand, 0, 2048) &&
           pSrcDstIsfMemory.createVector(3 * spectrum, setRand, 0, 2048) &&
           pSrcDstResidual.createVector(spectrum, setRand, 0, 2048) && createSpectrum(7);
}

void TimQNTWB::flushData() {
    deleteVectors();
}

class TimQNTDTXWB : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return spectrum; }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimQNTDTXWB::canStart() {
    grid.begin({});
    initVectors(m_func);
    return true;
}

bool TimQNTDTXWB::makeData() {
    return createSpectrum(5);
}

void TimQNTDTXWB::flushData() {
    deleteVectors();
}

} // namespace

VK_REG(TimQNTWB, veksISFQuantDecode_AMRWB_16s,
       veksISFQuantDecode_AMRWB_16s(pSrcIdxs.m_16s, pDstQIsf.m_16s, pSrcDstResidual.m_16s, pSrcPrevQntIsf.m_16s,
                                    pSrcDstIsfMemory.m_16s, bfi.value(), mode.value()))
VK_REG(TimQNTWB, veksISFQuant_AMRWB_16s,
       veksISFQuant_AMRWB_16s(pSrcIsf.m_16s, pSrcDstResidual.m_16s, pDstQIsf.m_16s, pDstQIsfIndex.m_16s, mode.value()))
VK_REG(TimQNTDTXWB, veksISFQuantDecodeDTX_AMRWB_16s, veksISFQuantDecodeDTX_AMRWB_16s(pSrcIdxs.m_16s, pDstQIsf.m_16s))
VK_REG(TimQNTDTXWB, veksISFQuantDTX_AMRWB_16s,
       veksISFQuantDTX_AMRWB_16s(pSrcIsf.m_16s, pDstQIsf.m_16s, pDstQIsfIndex.m_16s))
