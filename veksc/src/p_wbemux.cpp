// Lattice quantiser and demultiplexer of the extended wide-band codec's transform coding.
#include "vkc.h"

#include <iterator>

namespace ns_MuxFuns_wbe {

static vkVector pSrc, pDst;
static krStepIterator<int> cntMode;
static Vek16s noiseFactor;

struct ParamTCX {
    int len;
    int bits;
    const char* name;
};

static constexpr ParamTCX paramsTCX[] = {
    {48, 1, "tcx20_s2k"},        {48, 41, "tcx20_s4k"},       {48, 115, "tcx20_s8k"},    {96, 16, "tcx40_s2k"},
    {96, 96, "tcx40_s4k"},       {96, 244, "tcx40_s8k"},      {192, 46, "tcx80_s2k"},    {192, 206, "tcx80_s4k"},
    {192, 502, "tcx80_s8k"},     {288, 134, "tcx20_m9k6"},    {288, 262, "tcx20_m16k0"}, {288, 406, "tcx20_m23k2"},
    {576, 318, "tcx40_m9k6"},    {576, 574, "tcx40_m16k0"},   {576, 862, "tcx40_m23k2"}, {1152, 695, "tcx80_m9k6"},
    {1152, 1208, "tcx80_m16k0"}, {1152, 1783, "tcx80_m23k2"},
};

// Elements of four bits, packets (one for each 20 ms), and the bits of each packet.
static constexpr int paramsMuxer[][6] = {
    {1, 1, 1, 0, 0, 0},           {11, 1, 41, 0, 0, 0},         {29, 1, 115, 0, 0, 0},    {4, 2, 8, 8, 0, 0},
    {24, 2, 48, 48, 0, 0},        {62, 2, 122, 122, 0, 0},      {12, 4, 12, 12, 11, 11},  {52, 4, 52, 52, 51, 51},
    {128, 4, 126, 126, 125, 125}, {34, 1, 134, 0, 0, 0},        {66, 1, 262, 0, 0, 0},    {102, 1, 406, 0, 0, 0},
    {80, 2, 159, 159, 0, 0},      {144, 2, 287, 287, 0, 0},     {216, 2, 431, 431, 0, 0}, {176, 4, 174, 174, 174, 173},
    {304, 4, 302, 302, 302, 302}, {448, 4, 446, 446, 446, 445},
};

static constexpr int bfi[4] = {0, 0, 0, 0};

// The elements of a row are those of its packets, the packets' bits those of the mode.
static constexpr bool muxerFollowsModes() {
    bool follows = true;
    for (int mode = 0; mode < 18; ++mode) {
        int bits = 0;
        int elements = 0;
        for (int p = 0; p < paramsMuxer[mode][1]; ++p) {
            bits += paramsMuxer[mode][2 + p];
            elements += (paramsMuxer[mode][2 + p] + 3) / 4;
        }
        follows = follows && bits == paramsTCX[mode].bits && elements == paramsMuxer[mode][0];
    }
    return follows;
}
static_assert(muxerFollowsModes());

// What both directions share: the modes.
class ModesTCX : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(cntMode, "ModeCounter").set(0, 17, 1, '+');
        initVectors({&pSrc, &pDst}, vk16s);
        return walk({&cntMode});
    }

    double getDivisor() override { return paramsTCX[cntMode.value()].len; }
};

class krQntTCX_wbe : public ModesTCX {
public:
    using ModesTCX::ModesTCX;

    bool makeData() override {
        if (!vkcCounts(cntMode, std::size(paramsTCX))) {
            return false;
        }
        const int size = paramsTCX[cntMode.value()].len;
        return pSrc.createVector(size, setValue, 0, 0) && pDst.createVector(size, setValue, 1, 0);
    }
};

class krDecMux_wbe : public ModesTCX {
public:
    using ModesTCX::ModesTCX;

    bool makeData() override {
        return vkcCounts(cntMode, std::size(paramsMuxer)) &&
               pSrc.createVector(paramsMuxer[cntMode.value()][0], setValue, 10, 0) &&
               pDst.createVector(paramsTCX[cntMode.value()].len, setValue, 1, 0);
    }
};

VK_REG(krQntTCX_wbe, veksQuantTCX_AMRWBE_16s,
       veksQuantTCX_AMRWBE_16s(pSrc.m_16s, pDst.m_16s, paramsTCX[cntMode.value()].len / 8,
                               paramsTCX[cntMode.value()].bits, &noiseFactor))
VK_REG(krDecMux_wbe, veksDecodeDemux_AMRWBE_16s,
       veksDecodeDemux_AMRWBE_16s(pSrc.m_16s, &paramsMuxer[cntMode.value()][2], bfi, paramsMuxer[cntMode.value()][1],
                                  pDst.m_16s, paramsTCX[cntMode.value()].len / 8))

} // namespace ns_MuxFuns_wbe
