// Vector of the algebraic codebook from the words of the bit stream.
#include <algorithm>

#include "sc/common/signal_check.h"
#include "sc/gsmamr/codewords.h"
#include "sc/gsmamr/speechrates.h"
#include "veksc_gsmamr.h"

using namespace vek;
using namespace vek::gsmamr;

VekStatus veksFixedCodebookDecode_GSMAMR_16s(const Vek16s* pSrcFixedIndex, Vek16s* pDstFixedVector, Vek16s subFrame,
                                             VekSpchBitRate mode) {
    if (anyNull(pSrcFixedIndex, pDstFixedVector)) {
        return vekStsNullPtrErr;
    }
    if (!isRateOrDtx(mode)) {
        return vekStsBitRateErr;
    }
    if (!isSubframe(subFrame)) {
        return vekStsRangeErr;
    }
    std::fill_n(pDstFixedVector, kSubframe, Vek16s{0});
    switch (mode) {
    case VEK_SPCHBR_4750:
    case VEK_SPCHBR_5150:
        decodePair9(pSrcFixedIndex, subFrame, pDstFixedVector);
        break;
    case VEK_SPCHBR_5900:
        decodePair11(pSrcFixedIndex, pDstFixedVector);
        break;
    case VEK_SPCHBR_6700:
        decodeThree14(pSrcFixedIndex, pDstFixedVector);
        break;
    case VEK_SPCHBR_7400:
    case VEK_SPCHBR_7950:
        decodeFour17(pSrcFixedIndex, pDstFixedVector);
        break;
    case VEK_SPCHBR_10200:
        decodeEight31(pSrcFixedIndex, pDstFixedVector);
        break;
    default:
        decodeTen35(pSrcFixedIndex, pDstFixedVector);
        break;
    }
    return vekStsNoErr;
}
