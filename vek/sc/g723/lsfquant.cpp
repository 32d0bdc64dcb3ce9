// Split vector quantisation of the line spectral frequencies of G.723.1.
#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

// The entry with the largest 2 * sum of target * w * entry - sum of entry * w * entry, w * entry rounded. No entry is
// longer than 6012 in an element, so that the sums stay below 2^31.
template <int size>
int search(const int16_t (&book)[size][kLsfEntries], const int16_t* weight, const int16_t* target) {
    int32_t measure[kLsfEntries] = {};
    for (int j = 0; j < size; ++j) {
        const int32_t w = weight[j];
        const int32_t twice = target[j] * 2;
        for (int i = 0; i < kLsfEntries; ++i) {
            const int32_t entry = book[j][i];
            measure[i] += ((w * entry + 0x4000) >> 15) * (twice - entry);
        }
    }
    int best = 0;
    for (int i = 1; i < kLsfEntries; ++i) {
        best = measure[i] > measure[best] ? i : best;
    }
    return best;
}

} // namespace

VekStatus veksLSFQuant_G723_16s32s(const Vek16s* pSrcLsf, const Vek16s* pSrcPrevLsf, Vek32s* pResultQLsfIndex) {
    if (!pSrcLsf || !pSrcPrevLsf || !pResultQLsfIndex) {
        return vekStsNullPtrErr;
    }
    int16_t weight[kOrder];
    int16_t target[kOrder];
    int16_t most = 1;
    for (int i = 0; i < kOrder; ++i) {
        const int below = i > 0 ? pSrcLsf[i] - pSrcLsf[i - 1] : 65536;
        const int above = i < kOrder - 1 ? pSrcLsf[i + 1] - pSrcLsf[i] : 65536;
        const int nearest = below < above ? below : above;
        weight[i] = nearest > 32 ? static_cast<int16_t>((1 << 20) / nearest) : int16_t{32767};
        most = weight[i] > most ? weight[i] : most;
        const int16_t predicted = mult_r(sub(pSrcPrevLsf[i], kLsfMean[i]), 12288);
        target[i] = sub(sub(pSrcLsf[i], kLsfMean[i]), predicted);
    }
    const int16_t shift = norm_s(most);
    for (int16_t& w : weight) {
        w = shl(w, shift);
    }
    *pResultQLsfIndex = (search(kLsfBook0, weight, target) << 16) | (search(kLsfBook1, weight + 3, target + 3) << 8) |
                        search(kLsfBook2, weight + 6, target + 6);
    return vekStsNoErr;
}
