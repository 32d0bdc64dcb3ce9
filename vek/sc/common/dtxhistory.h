// Histories of spectrum and energy of the discontinuous transmission of both adaptive multi-rate codecs.
#pragma once

#include <cstring>

#include "sc/common/signal_check.h"
#include "vekdefs.h"

namespace vek {

constexpr int kDtxHistory = 8;

/// Enters a frame's spectrum of Order elements and energyOf(speech) behind the entry at *place, in a circle.
template <int Order, class Energy>
VekStatus enterDtxHistory(const Vek16s* speech, const Vek16s* spectrum, Vek16s* place, Vek16s* spectra,
                          Vek16s* energies, Energy energyOf) {
    if (anyNull(speech, spectrum, place, spectra, energies)) {
        return vekStsNullPtrErr;
    }
    if (*place < 0 || *place >= kDtxHistory) {
        return vekStsRangeErr;
    }
    const int next = *place + 1 == kDtxHistory ? 0 : *place + 1;
    const Vek16s energy = energyOf(speech);
    std::memmove(spectra + next * Order, spectrum, Order * sizeof(Vek16s));
    energies[next] = energy;
    *place = static_cast<Vek16s>(next);
    return vekStsNoErr;
}

} // namespace vek
