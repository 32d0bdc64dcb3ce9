// Histories of spectrum and energy of AMR-WB's discontinuous transmission, in the encoder and the decoder.
#include "sc/common/dtxhistory.h"
#include "sc/amrwb/rates.h"
#include "sc/common/logarithm.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::amrwb;

// Logarithm of the frame's energy, Q7, less `lowering` beside that of its length.
Vek16s logEnergy(const Vek16s* speech, int lowering) {
    const int32_t energy = sat32(2 * corrKernels().dot16(speech, speech, kFrame)) >> 1;
    Vek16s whole = 0;
    Vek16s fraction = 0;
    Log2(energy, whole, fraction);
    return static_cast<Vek16s>(whole * 128 + (fraction >> 8) - 1024 - lowering);
}

VekStatus enter(const Vek16s* speech, const Vek16s* spectrum, Vek16s* place, Vek16s* spectra, Vek16s* energies,
                int lowering) {
    return enterDtxHistory<kOrder>(speech, spectrum, place, spectra, energies,
                                   [&](const Vek16s* x) { return logEnergy(x, lowering); });
}

} // namespace

VekStatus veksDecDTXBuffer_AMRWB_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcIsp, Vek16s* pUpdateIndex,
                                     Vek16s* pSrcDstIspBuffer, Vek16s* pSrcDstLogEnergyBuffer) {
    return enter(pSrcSpch, pSrcIsp, pUpdateIndex, pSrcDstIspBuffer, pSrcDstLogEnergyBuffer, 0);
}

VekStatus veksEncDTXBuffer_AMRWB_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcIsp, Vek16s* pUpdateIndex,
                                     Vek16s* pSrcDstIspBuffer, Vek16s* pSrcDstLogEnergyBuffer, VekSpchBitRate mode) {
    static constexpr int lowering[9] = {230, 179, 141, 128, 122, 115, 115, 115, 115};
    if (anyNull(pSrcSpch, pSrcIsp, pUpdateIndex, pSrcDstIspBuffer, pSrcDstLogEnergyBuffer)) {
        return vekStsNullPtrErr;
    }
    const auto rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    return enter(pSrcSpch, pSrcIsp, pUpdateIndex, pSrcDstIspBuffer, pSrcDstLogEnergyBuffer,
                 lowering[static_cast<int>(rate)]);
}
