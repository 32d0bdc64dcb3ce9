// Impulse response of the weighted synthesis of AMR and the target of its adaptive codebook.
#include <cstring>

#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/sizes.h"
#include "veksc_gsmamrdtx.h"

using namespace vek::gsmamr;

constexpr int kFormat = 12;

VekStatus veksImpulseResponseTarget_GSMAMR_16s(const Vek16s* pSrcSpch, const Vek16s* pSrcWgtLpc1,
                                               const Vek16s* pSrcWgtLpc2, const Vek16s* pSrcQLpc,
                                               const Vek16s* pSrcSynFltState, const Vek16s* pSrcWgtFltState,
                                               Vek16s* pDstImpulseResponse, Vek16s* pDstLpResidual,
                                               Vek16s* pDstAdptTarget) {
    if (anyNull(pSrcSpch, pSrcWgtLpc1, pSrcWgtLpc2, pSrcQLpc, pSrcSynFltState, pSrcWgtFltState, pDstImpulseResponse,
                pDstLpResidual, pDstAdptTarget)) {
        return vekStsNullPtrErr;
    }
    const Vek16s rest[kOrder] = {};
    Vek16s response[kSubframe] = {};
    std::memcpy(response, pSrcWgtLpc1, (kOrder + 1) * sizeof(Vek16s));
    synthesisFilter(pSrcQLpc, kOrder, response, response, kSubframe, kFormat, rest);
    synthesisFilter(pSrcWgtLpc2, kOrder, response, response, kSubframe, kFormat, rest);

    Vek16s residual[kSubframe];
    Vek16s error[kOrder + kSubframe];
    Vek16s target[kSubframe];
    residualFilter(pSrcQLpc, kOrder, pSrcSpch, residual, kSubframe, kFormat);
    std::memcpy(error, pSrcSynFltState, kOrder * sizeof(Vek16s));
    synthesisFilter(pSrcQLpc, kOrder, residual, error + kOrder, kSubframe, kFormat, error);
    residualFilter(pSrcWgtLpc1, kOrder, error + kOrder, target, kSubframe, kFormat);
    synthesisFilter(pSrcWgtLpc2, kOrder, target, target, kSubframe, kFormat, pSrcWgtFltState);

    std::memcpy(pDstImpulseResponse, response, sizeof response);
    std::memcpy(pDstLpResidual, residual, sizeof residual);
    std::memcpy(pDstAdptTarget, target, sizeof target);
    return vekStsNoErr;
}
