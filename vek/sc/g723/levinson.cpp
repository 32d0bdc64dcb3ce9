// Levinson-Durbin recursion of G.723.1 in 16 bits.
#include <cstring>

#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek::g723;

VekStatus veksLevinsonDurbin_G723_16s(const Vek16s* pSrc, Vek16s* pResultPk2, Vek16s* pSrcDstErr, Vek16s* pLPC) {
    if (!pSrc || !pResultPk2 || !pSrcDstErr || !pLPC) {
        return vekStsNullPtrErr;
    }
    Vek16s a[kOrder] = {};
    Vek16s error = *pSrcDstErr;
    Vek16s second = 0;
    for (int i = 0; i < kOrder; ++i) {
        int64_t sum = int64_t{pSrc[i]} * 8192;
        for (int j = 0; j < i; ++j) {
            sum -= a[j] * pSrc[i - 1 - j];
        }
        const int32_t open = sat32(sum * 8);
        const int64_t limit = int64_t{error} * 65536;
        if (L_abs(open) >= limit) {
            second = 32767;
            break;
        }
        const auto reflection = static_cast<Vek16s>(open / (error * 2));
        if (i == 1) {
            second = negate(reflection);
        }
        error = round_s(sat32(limit - mulHigh(open, reflection)));
        Vek16s before[kOrder];
        std::memcpy(before, a, sizeof a);
        for (int j = 0; j < i; ++j) {
            a[j] = round_s(L_msu(L_deposit_h(before[j]), reflection, before[i - 1 - j]));
        }
        a[i] = round_s(reflection * 16384);
    }
    std::memcpy(pLPC, a, sizeof a);
    *pResultPk2 = second;
    *pSrcDstErr = error;
    return vekStsNoErr;
}
