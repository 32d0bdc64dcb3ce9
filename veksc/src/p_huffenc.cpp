// Entropy coding of a region of G.722.1.
#include "vkc.h"

namespace {

vkVector pSrcMLTCoeffs, pDstCode;
krStepIterator<int> modeCount;
int codeLength;

constexpr int region = 20;
constexpr int modes = 3;
// Three regions: a loud one coded finely, one of middle level, a weak one coded coarsely.
constexpr int category[modes] = {0, 3, 6};
constexpr int envelope[modes] = {12, 9, 5};
const Vek16s pSrcArr[modes][region] = {
    {48, -91, 17, 66, -30, 5, -77, 120, -54, 8, 33, -12, 95, -41, 60, -103, 22, -6, 71, -37},
    {-19, 31, 8, -26, 40, -3, 14, -22, 35, -11, 2, 27, -38, 16, -7, 21, -29, 12, 5, -17},
    {4, -7, 1, 5, -9, 2, -3, 8, -1, 6, -4, 3, -6, 10, -2, 5, -8, 1, 7, -3},
};

class TimHuffenc : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        vkcRebuild(modeCount, "modeCount").set(0, 2, 1, '+');
        initVectors({&pSrcMLTCoeffs}, vkArg::src);
        initVectors({&pDstCode}, vkArg::dst);
        return walk({&modeCount});
    }

    bool makeData() override {
        if (!vkcCounts(modeCount, modes) || !pSrcMLTCoeffs.createVector(region, setZero, 0, 0) ||
            !pDstCode.createVector(4, setZero, 0, 0)) {
            return false;
        }
        std::memcpy(pSrcMLTCoeffs.m_16s, pSrcArr[modeCount.value()], sizeof pSrcArr[0]);
        return true;
    }

    double getDivisor() override { return region; }
};

} // namespace

VK_REG(TimHuffenc, veksHuffmanEncode_G722_16s32u,
       veksHuffmanEncode_G722_16s32u(category[modeCount.value()], envelope[modeCount.value()], pSrcMLTCoeffs.m_16s,
                                     pDstCode.m_32u, &codeLength))
