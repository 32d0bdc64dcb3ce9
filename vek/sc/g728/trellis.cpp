// Trellis-coded quantisation of the excitation of a vector: all paths through the trellis that survive carry the
// synthesis of their own quantised samples, so that each predicts its next one.
#include <algorithm>
#include <array>
#include <cstdint>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g728/tables.h"
#include "veksc_g728.h"

using namespace vek::g728;

namespace {

constexpr int kNodes = 8;
constexpr int kSubsets = 4;
constexpr int kMembers = 2 * kHalfLevels / kSubsets;
constexpr int kMemberBits = 4;
// Levels are in Q12, gains in Q3, samples in Q2; the inverse gain is in Q30.
constexpr int kLevelShift = 12 + 3 - 2;
constexpr int kIndexShift = 2 + 30 - 12;

// The levels of a subset, rising.
std::array<std::array<int16_t, kMembers>, kSubsets> subsets() {
    std::array<std::array<int16_t, kMembers>, kSubsets> s{};
    for (size_t i = 0; i < 2 * kHalfLevels; ++i) {
        s[i % kSubsets][i / kSubsets] = i < kHalfLevels ? static_cast<int16_t>(-kTrellisLevels[kHalfLevels - 1 - i])
                                                        : kTrellisLevels[i - kHalfLevels];
    }
    return s;
}
const std::array<std::array<int16_t, kMembers>, kSubsets> g_subsets = subsets();

// A node is three bits s1 s2 s3; s3 and the branch choose the subset 2 * branch + s3. The next node is s3, s1 + branch,
// s2 + s3, modulo 2.
constexpr int next(int node, int branch) {
    const int s1 = node >> 2;
    const int s2 = node >> 1 & 1;
    const int s3 = node & 1;
    return s3 << 2 | (s1 ^ branch) << 1 | (s2 ^ s3);
}

struct Path {
    bool alive = false;
    int64_t error = 0;
    Vek8u code[kVector] = {};
    Vek16s excitation[kVector] = {};
    int32_t response[kVector] = {};
};

// The member nearest to a level; of equally near ones the lower.
int nearest(const std::array<int16_t, kMembers>& levels, int64_t level) {
    int low = 0;
    for (int half = kMembers / 2; half > 0; half /= 2) {
        const auto at = static_cast<size_t>(low + half);
        low += 2 * level > levels[at - 1] + levels[at] ? half : 0;
    }
    return low;
}

} // namespace

VekStatus veksCodebookSearchTCQ_G728_16s8u(const Vek16s* pSrc, const Vek16s* pSrcLPC, Vek8u* pDst,
                                           Vek16s* pSrcDstWindow, Vek16s* pSrcDstResidual, int* pSrcDstBestNode,
                                           Vek32s invGain, Vek16s excGain) {
    if (anyNull(pSrc, pSrcLPC, pDst, pSrcDstWindow, pSrcDstResidual, pSrcDstBestNode)) {
        return vekStsNullPtrErr;
    }
    if (*pSrcDstBestNode < 0 || *pSrcDstBestNode >= kNodes || invGain <= 0 || excGain <= 0) {
        return vekStsRangeErr;
    }
    Path paths[kNodes];
    paths[*pSrcDstBestNode].alive = true;
    for (int k = 0; k < kVector; ++k) {
        Path reached[kNodes];
        for (int node = 0; node < kNodes; ++node) {
            const Path& path = paths[node];
            if (!path.alive) {
                continue;
            }
            int64_t carried = 0;
            for (int i = 0; i < k; ++i) {
                carried -= int64_t{pSrcLPC[i]} * path.response[k - 1 - i];
            }
            carried = std::clamp<int64_t>((carried + (1 << (kCoeffShift - 1))) >> kCoeffShift, -(1 << 24), 1 << 24);
            const int64_t residual = int64_t{pSrc[k]} - pSrcDstWindow[k] - pSrcDstResidual[k] - carried;
            const int64_t level = (residual * invGain) >> kIndexShift;
            for (int branch = 0; branch < 2; ++branch) {
                const auto& levels = g_subsets[static_cast<size_t>(2 * branch + (node & 1))];
                const int member = nearest(levels, level);
                const int product = levels[static_cast<size_t>(member)] * excGain;
                const int16_t excitation = fix::sat16((product + (1 << (kLevelShift - 1))) >> kLevelShift);
                const int64_t error = path.error + (residual - excitation) * (residual - excitation);
                Path& to = reached[next(node, branch)];
                if (to.alive && to.error <= error) {
                    continue;
                }
                to = path;
                to.error = error;
                to.code[k] = static_cast<Vek8u>(branch << kMemberBits | member);
                to.excitation[k] = excitation;
                to.response[k] = static_cast<int32_t>(carried + excitation);
            }
        }
        std::copy_n(reached, kNodes, paths);
    }
    int best = -1;
    for (int node = 0; node < kNodes; ++node) {
        if (paths[node].alive && (best < 0 || paths[node].error < paths[best].error)) {
            best = node;
        }
    }
    const Path& path = paths[best];
    for (int k = 0; k < kVector; ++k) {
        pDst[k] = path.code[k];
        pSrcDstWindow[k] = fix::sat16(pSrcDstWindow[k] + path.response[k]);
        pSrcDstResidual[k] = path.excitation[k];
    }
    *pSrcDstBestNode = best;
    return vekStsNoErr;
}
