// What all speech suites share, and the list of hot functions.
#include "vkc.h"

#include "krbase.h"
#include "krlib.h"

#include <algorithm>
#include <climits>

// Each call goes through a function of its own, since the types of status and processor are the library's.
void vkSetVekEnvironment() {
    vek_GetCpuType = []() -> int { return vekGetCpuType(); };
    vek_GetNumCoresOnDie = []() -> int { return vekGetNumCoresOnDie(); };
    vek_GetMaxCacheSizeB = [](int* size) -> int { return vekGetMaxCacheSizeB(size); };
    vek_GetStatusString = [](int status) -> const char* { return vekGetStatusString(static_cast<VekStatus>(status)); };
    vek_Init = []() -> int { return vekInit(); };
    vek_InitCpu = [](int cpuType) -> int { return vekInitCpu(static_cast<VekCpuType>(cpuType)); };
    vek_SetNumThreads = [](int numThreads) -> int { return vekSetNumThreads(numThreads); };
}

const VekLibraryVersion* vkGetVekVersion_veksc() {
    return vekscGetLibVersion();
}

void vkcSwitch(krStepIterator<int>& parm, const krString& title, bool taken) {
    vkcRebuild(parm, title);
    if (taken) {
        parm.set(0, 1, 1, '+');
    } else {
        parm.setList({1});
    }
}

// The frame of the functions that take no length.
static constexpr int shortFrame = 320;

void vkcFrames(krStepIterator<int>& len, const vkFunc& func) {
    if (func.contains("G7221")) {
        len.set(shortFrame, 2 * shortFrame, shortFrame, '+');
    } else {
        len.setList({shortFrame});
    }
}

int vkcFrame(const krStepIterator<int>& len) {
    return std::max(len.value(), shortFrame);
}

void vkcGrid::begin(std::initializer_list<krParameter*> parms) {
    m_parms.clear();
    m_fixed.clear();
    for (krParameter* parm : parms) {
        m_parms.append(parm);
        const auto* size = dynamic_cast<const krStepIterator<int>*>(parm);
        if (size != nullptr && size->oper() == stepList && size->size() == 1) {
            m_fixed.append({parm, *size->begin()});
        }
        // Not null because a cast fails. NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        parm->fromIStream(g_istrm);
    }
}

long long vkcGrid::room(const krStepIterator<int>& parm) const {
    int size = parm.value();
    // What is no size at all stays so, and no vector is made of it.
    for (const Fixed& fixed : m_fixed) {
        if (fixed.parm == &parm && size > 0) {
            size = std::max(size, fixed.size);
        }
    }
    return size;
}

bool vkcGrid::next(bool first) {
    if (first) {
        return krFirstValues(m_parms);
    }
    auto place = m_parms.end();
    while (!(place == m_parms.begin())) {
        --place;
        if ((*place)->nextValue()) {
            // The exhausted inner parameters restart by their next step.
            for (++place; !(place == m_parms.end()); ++place) {
                if (!(*place)->nextValue()) {
                    return false;
                }
            }
            return true;
        }
    }
    return false;
}

void vkcGrid::toOstrm() const {
    for (const krParameter* parm : m_parms) {
        parm->toOStream(g_ostrm);
    }
}

void vkcGrid::toCstrm() const {
    for (const krParameter* parm : m_parms) {
        parm->toCStream(g_cstrm);
    }
}

void vkcGrid::namesToCstrm() const {
    for (const krParameter* parm : m_parms) {
        parm->nameToCStream(g_cstrm);
    }
}

bool vkcRefuse(krTest& test) {
    krTest::raiseResult(krDataFail);
    test.putTextError(krTest::m_currentResult);
    test.flushData();
    return false;
}

void vkcTest::flushData() {
    for (const std::function<void()>& release : m_releases) {
        release();
    }
    m_releases.clear();
    for (vkVector* vector : m_vectors) {
        vector->deleteVector();
    }
}

// A test that starts anew takes the same vectors again.
void vkcTest::take(vkVector* vector) {
    for (const vkVector* taken : m_vectors) {
        if (taken == vector) {
            return;
        }
    }
    m_vectors.insert(m_vectors.begin(), vector);
}

bool vkcCreate(std::initializer_list<vkVector*> vectors, long long size, SetMode mode, double first, double second) {
    return std::all_of(vectors.begin(), vectors.end(),
                       [&](vkVector* vector) { return vector->createVector(size, mode, first, second); });
}

bool vkcFits(long long rows, long long bytes) {
    if (rows < 1 || bytes < 1) {
        return memError(0);
    }
    return (rows <= INT_MAX / bytes && krMemoryHolds(rows * bytes)) || memError(INT_MAX);
}

krString vkcUnit(int index) {
    static const char* const words[] = {" ", "e", "px", "pxch", "cpMac", "e_kp", "px_kp", "pxch_kp"};
    return words[index];
}

#define VKC_HOT(function) static const bool hot_##function = krRegHotFunction(#function) != 0;
VKC_HOT(veksACELPFixedCodebookSearch_G723_32s16s)
VKC_HOT(veksAdaptiveCodebookSearch_G723)
VKC_HOT(veksAdaptiveCodebookSearch_GSMAMR_16s)
VKC_HOT(veksAlgebraicCodebookSearch_GSMAMR_16s)
VKC_HOT(veksAutoCorr_GSMAMR_16s32s)
VKC_HOT(veksAutoCorr_NormE_16s32s)
VKC_HOT(veksAutoCorrLagMax_Inv_16s)
VKC_HOT(veksFixedCodebookSearch_G729_16s)
VKC_HOT(veksFixedCodebookSearch_G729_32s16s)
VKC_HOT(veksFixedCodebookSearch_G729D_16s)
VKC_HOT(veksFixedCodebookSearch_G729E_16s)
VKC_HOT(veksGainQuant_G723_16s)
VKC_HOT(veksHarmonicSearch_G723_16s)
VKC_HOT(veksHighPassFilter_G729_16s_ISfs)
VKC_HOT(veksIIR16s_G723_16s32s)
VKC_HOT(veksIIR16s_G729_16s)
VKC_HOT(veksLongTermPostFilter_G729_16s)
VKC_HOT(veksLPCToLSP_G729_16s)
VKC_HOT(veksLPCToLSP_G729A_16s)
VKC_HOT(veksLPCToLSP_GSMAMR_16s)
VKC_HOT(veksLSFQuant_G723_16s32s)
VKC_HOT(veksOpenLoopPitchSearch_G723_16s)
VKC_HOT(veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s)
VKC_HOT(veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s)
VKC_HOT(veksOpenLoopPitchSearchNonDTX_GSMAMR_16s)
VKC_HOT(veksPitchPostFilter_G723_16s)
VKC_HOT(veksSynthesisFilter_NR_16s_ISfs)
#undef VKC_HOT
