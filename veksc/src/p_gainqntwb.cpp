// Quantisers and decoder of the gains of the wide-band codec, by rate.
#include "vkc.h"

namespace {

vkVector pSrcDstPastEnergy, pPrevCodeGain, pSrcDstPastCodeGain, pSrcAdptTarget, pSrcFltAdptVector, pSrcFixedVector,
    pSrcFltFixedVector, pSrcCorr, pSrcDstEnergyErr, pSrcDstPitchGain, pDstQGainIndex, pDstCorrFactor;
krStepIterator<int> bfi, prevBfi, lenSrc, valClipFlag;
krEnumIterator<VekSpchBitRate> mode;
Vek16s pDstPitchGain;
Vek32s pDstCodeGain;

// Fits the narrower field too.
constexpr int valQIndex = 37;
// 2 in Q12: a pulse in four samples.
constexpr Vek16s valEnergy = 8192;

class TimGAINQNTWB : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcFix(bfi, 0);
        vkcFix(prevBfi, 0);
        vkcFix(valClipFlag, 0);
        vkcRebuild(lenSrc, "Lenght").setList({64});
        vkcModes(vkcRebuild(mode, "BitRate"), vkcRatesAMRWB, vkcSilence);
        if (m_decode) {
            vkcRebuild(bfi, "bfi").set(0, 1, 1, '+');
            vkcRebuild(prevBfi, "prevBfi").set(0, 1, 1, '+');
        } else if (!m_extended) {
            vkcRebuild(valClipFlag, "valClipFlag").set(0, 1, 1, '+');
        }
        initVectors({&pSrcDstPastEnergy, &pPrevCodeGain, &pSrcDstPastCodeGain, &pSrcAdptTarget, &pSrcFltAdptVector,
                     &pSrcFixedVector, &pSrcFltFixedVector, &pSrcCorr, &pSrcDstEnergyErr, &pSrcDstPitchGain,
                     &pDstQGainIndex, &pDstCorrFactor},
                    vkArg::src);
        if (m_extended) {
            return walk({&lenSrc});
        }
        return walk({&mode, &bfi, &prevBfi, &lenSrc, &valClipFlag});
    }

    bool makeData() override { return m_decode ? setDecodeData() : setQuantData(); }
    double getDivisor() override { return m_decode ? lenSrc.value() : lenSrc.value() * 2.0; }

    virtual bool setDecodeData() {
        return pSrcDstPastEnergy.createVector(4, setRand, -16384, 16384) &&
               pPrevCodeGain.createVector(1, setRand, -16384, 16384) &&
               pSrcDstPastCodeGain.createVector(1, setRand, -16384, 16384);
    }

    virtual bool setQuantData() {
        const int loud = m_extended ? 1024 : 4096;
        return pSrcAdptTarget.createVector(m_grid.room(lenSrc), setRand, -4096, 4096) &&
               pSrcFltAdptVector.createVector(m_grid.room(lenSrc), setRand, -4096, 4096) &&
               pSrcFixedVector.createVector(m_grid.room(lenSrc), setRand, -loud, loud) &&
               pSrcFltFixedVector.createVector(m_grid.room(lenSrc), setRand, -loud, loud) &&
               pSrcCorr.createVector(4, setRand, 0, 32767) &&
               pSrcDstEnergyErr.createVector(4, setRand, m_extended ? 0 : -32768, m_extended ? 8192 : 32767) &&
               pSrcDstPitchGain.createVector(1, setRand, -15565, 15565) &&
               pDstQGainIndex.createVector(1, setZero, 0, 0) && pDstCorrFactor.createVector(1, setZero, 0, 0);
    }

private:
    const bool m_decode = m_func.contains("Decode");
    const bool m_extended = m_func.contains("AMRWBE");
};

} // namespace

VK_REG(TimGAINQNTWB, veksGainQuant_AMRWBE_16s,
       veksGainQuant_AMRWBE_16s(pSrcAdptTarget.m_16s, pSrcFltAdptVector.m_16s, 14, pSrcFixedVector.m_16s,
                                pSrcFltFixedVector.m_16s, lenSrc.value(), pSrcCorr.m_16s, pSrcDstEnergyErr.m_16s[1],
                                pSrcDstPitchGain.m_16s, pDstCorrFactor.m_16s, &pDstCodeGain, pDstQGainIndex.m_16s))
VK_REG(TimGAINQNTWB, veksDecodeGain_AMRWB_16s,
       veksDecodeGain_AMRWB_16s(valQIndex, valEnergy, &pDstPitchGain, &pDstCodeGain, bfi.value(), prevBfi.value(),
                                pSrcDstPastEnergy.m_16s, pPrevCodeGain.m_16s, pSrcDstPastCodeGain.m_16s, mode.value()))
VK_REG(TimGAINQNTWB, veksGainQuant_AMRWB_16s,
       veksGainQuant_AMRWB_16s(pSrcAdptTarget.m_16s, pSrcFltAdptVector.m_16s, 14, pSrcFixedVector.m_16s,
                               pSrcFltFixedVector.m_16s, pSrcCorr.m_16s, pSrcDstEnergyErr.m_16s, pSrcDstPitchGain.m_16s,
                               &pDstCodeGain, valClipFlag.value(), pDstQGainIndex.m_16s, lenSrc.value(), mode.value()))
