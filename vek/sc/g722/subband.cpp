// Sub-band ADPCM of G.722: its states. The bands are in the kernels.
#include "sc/g722/subband.h"

#include <cstring>

#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/g722.h"
#include "veksc_g722.h"

using namespace vek;
using namespace vek::g722;

namespace {

constexpr int kLeastLow = 32;
constexpr int kLeastHigh = 8;

VekStatus begin(VeksCodecState_G722* state) {
    if (state == nullptr) {
        return vekStsNullPtrErr;
    }
    Bands bands = {};
    bands.started = kStarted;
    bands.low.scale = kLeastLow;
    bands.high.scale = kLeastHigh;
    std::memcpy(static_cast<void*>(state), &bands, sizeof bands);
    return vekStsNoErr;
}

VekStatus check(const Vek16s* pSrc, const Vek16s* pDst, int len, const void* state, Bands& bands) {
    if (anyNull(pSrc, pDst) || state == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || len % 2 != 0) {
        return vekStsSizeErr;
    }
    std::memcpy(&bands, state, sizeof bands);
    return bands.started == kStarted ? vekStsNoErr : vekStsStateErr;
}

} // namespace

VekStatus veksSBADPCMEncodeStateSize_G722_16s(int* pSize) {
    return stateSize<Bands>(pSize);
}

VekStatus veksSBADPCMDecodeStateSize_G722_16s(int* pSize) {
    return stateSize<Bands>(pSize);
}

VekStatus veksSBADPCMEncodeInit_G722_16s(VeksCodecState_G722* pEncMem) {
    return begin(pEncMem);
}

VekStatus veksSBADPCMDecodeInit_G722_16s(VeksCodecState_G722* pDecMem) {
    return begin(pDecMem);
}

VekStatus veksSBADPCMEncode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, VeksCodecState_G722* pEncMem) {
    Bands bands;
    const VekStatus status = check(pSrc, pDst, len, pEncMem, bands);
    if (status != vekStsNoErr) {
        return status;
    }
    g722Kernels().encode(bands, pSrc, pDst, len / 2);
    std::memcpy(static_cast<void*>(pEncMem), &bands, sizeof bands);
    return vekStsNoErr;
}

VekStatus veksSBADPCMDecode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, int mode,
                                     VeksCodecState_G722* pDecMem) {
    Bands bands;
    const VekStatus status = check(pSrc, pDst, len, pDecMem, bands);
    if (status != vekStsNoErr) {
        return status;
    }
    if (mode < 1 || mode > 3) {
        return vekStsModeErr;
    }
    g722Kernels().decode(bands, pSrc, pDst, len / 2, mode);
    std::memcpy(static_cast<void*>(pDecMem), &bands, sizeof bands);
    return vekStsNoErr;
}
