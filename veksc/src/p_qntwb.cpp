// Quantisers of the wide-band codec's spectra, in speech and in silence.
#include "vkc.h"

namespace {

vkVector pSrcIdxs, pSrcPrevQntIsf, pSrcDstIsfMemory, pSrcDstResidual, pDstQIsf, pSrcIsf, pDstQIsfIndex;
krEnumIterator<VekSpchBitRate> mode;
krStepIterator<int> bfi;

constexpr int spectrum = 16;

const auto vectors = {&pSrcIdxs, &pSrcPrevQntIsf, &pSrcDstIsfMemory, &pSrcDstResidual,
                      &pDstQIsf, &pSrcIsf,        &pDstQIsfIndex};

bool createSpectrum(int indices) {
    return pSrcIdxs.createVector(indices, setRand, 0, 32) && pDstQIsf.createVector(spectrum, setZero, 0, 0) &&
           pSrcIsf.createVector(spectrum, setRand, -2048, 2048) && pDstQIsfIndex.createVector(indices, setZero, 0, 0);
}

class TimQNTWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcModes(vkcRebuild(mode, "BitRate"), {VEK_SPCHBR_6600, VEK_SPCHBR_8850});
        if (m_func.contains("Decode")) {
            vkcRebuild(bfi, "Bfi").set(0, 1, 1, '+');
        } else {
            vkcFix(bfi, 0);
        }
        initVectors(vectors, vkArg::src);
        return walk({&mode, &bfi});
    }

    bool makeData() override {
        return pSrcPrevQntIsf.createVector(spectrum, setRand, 0, 2048) &&
               pSrcDstIsfMemory.createVector(3 * spectrum, setRand, 0, 2048) &&
               pSrcDstResidual.createVector(spectrum, setRand, 0, 2048) && createSpectrum(7);
    }

    double getDivisor() override { return spectrum; }
};

class TimQNTDTXWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        initVectors(vectors, vkArg::src);
        return walk({});
    }

    bool makeData() override { return createSpectrum(5); }
    double getDivisor() override { return spectrum; }
};

} // namespace

VK_REG(TimQNTWB, veksISFQuantDecode_AMRWB_16s,
       veksISFQuantDecode_AMRWB_16s(pSrcIdxs.m_16s, pDstQIsf.m_16s, pSrcDstResidual.m_16s, pSrcPrevQntIsf.m_16s,
                                    pSrcDstIsfMemory.m_16s, bfi.value(), mode.value()))
VK_REG(TimQNTWB, veksISFQuant_AMRWB_16s,
       veksISFQuant_AMRWB_16s(pSrcIsf.m_16s, pSrcDstResidual.m_16s, pDstQIsf.m_16s, pDstQIsfIndex.m_16s, mode.value()))
VK_REG(TimQNTDTXWB, veksISFQuantDecodeDTX_AMRWB_16s, veksISFQuantDecodeDTX_AMRWB_16s(pSrcIdxs.m_16s, pDstQIsf.m_16s))
VK_REG(TimQNTDTXWB, veksISFQuantDTX_AMRWB_16s,
       veksISFQuantDTX_AMRWB_16s(pSrcIsf.m_16s, pDstQIsf.m_16s, pDstQIsfIndex.m_16s))
