// Emphasis and synthesis of the wide-band codec and of its extension.
#include "vkc.h"

namespace {

vkVector pSrcSignal, pDstSignal, pSrcDstSignal, pMem, pSrcLpc, pSrcExcitation;
krStepIterator<int> len, valLpcOrder, scale;

constexpr Vek16s val = 22282; // 0.68

// What emphasis in both codecs shares.
class Emphasis : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(32, 256, 32, '+');
        initVectors({&pSrcSignal, &pSrcDstSignal}, vkArg::src);
        initVectors({&pDstSignal, &pMem}, vkArg::dst);
        return walkGrid();
    }

    bool makeData() override {
        return pSrcSignal.createVector(len.value(), setRand, -65536, 65536) &&
               pSrcDstSignal.createVector(len.value(), setRand, -65536, 65536) &&
               pDstSignal.createVector(len.value(), setZero, 0, 0) && pMem.createVector(1, setRand, -4096, 4096);
    }

    double getDivisor() override { return len.value(); }

protected:
    virtual bool walkGrid() { return walk({&len}); }
};

class TimDeemphWB : public Emphasis {
public:
    using Emphasis::Emphasis;
};

class TimDeemphWBE : public Emphasis {
public:
    using Emphasis::Emphasis;

protected:
    bool walkGrid() override {
        vkcRebuild(scale, "scale").set(13, 15, 1, '+');
        return walk({&scale, &len});
    }
};

// What synthesis in both codecs shares; they differ in the orders of the filter.
class Synthesis : public vkcGridTest {
public:
    using vkcGridTest::vkcGridTest;

    bool canStart() override {
        vkcRebuild(len, "Lenght").set(32, 128, 32, '+');
        vkcRebuild(valLpcOrder, "valLpcOrder");
        setOrders();
        initVectors({&pSrcLpc, &pSrcExcitation}, vkArg::src);
        initVectors({&pSrcDstSignal}, vkArg::dst);
        return walk({&len, &valLpcOrder});
    }

    // The outputs before the first stand ahead of those of the call.
    bool makeData() override {
        return pSrcDstSignal.createVector(m_grid.room(valLpcOrder) + vkcSize(len), setRand, -65536, 65536) &&
               pSrcLpc.createVector(m_grid.room(valLpcOrder) + 1, setRand, -4096, 4096) &&
               pSrcExcitation.createVector(len.value(), setRand, -4096, 4096);
    }

    double getDivisor() override { return static_cast<double>(len.value()) * valLpcOrder.value(); }

protected:
    virtual void setOrders() = 0;
};

class TimSinthWB : public Synthesis {
public:
    using Synthesis::Synthesis;

protected:
    void setOrders() override { valLpcOrder.set(8, 24, 8, '+'); }
};

class TimSinthWBE : public Synthesis {
public:
    using Synthesis::Synthesis;

protected:
    void setOrders() override { valLpcOrder.setList({10}); }
};

} // namespace

VK_REG(TimDeemphWB, veksPreemphasize_AMRWB_16s_ISfs,
       veksPreemphasize_AMRWB_16s_ISfs(val, pSrcDstSignal.m_16s, len.value(), 14, pMem.m_16s))
VK_REG(TimDeemphWB, veksDeemphasize_AMRWB_32s16s,
       veksDeemphasize_AMRWB_32s16s(val, pSrcSignal.m_32s, pDstSignal.m_16s, len.value(), pMem.m_16s))
VK_REG(TimDeemphWB, veksDeemphasize_AMRWB_NR_16s_I,
       veksDeemphasize_AMRWB_NR_16s_I(val, pSrcDstSignal.m_16s, len.value(), pMem.m_16s))
VK_REG(TimSinthWB, veksSynthesisFilter_AMRWB_16s32s_I,
       veksSynthesisFilter_AMRWB_16s32s_I(pSrcLpc.m_16s, valLpcOrder.value(), pSrcExcitation.m_16s,
                                          pSrcDstSignal.m_32s + valLpcOrder.value(), len.value()))
VK_REG(TimDeemphWBE, veksDeemphasize_AMRWBE_NR_16s_I,
       veksDeemphasize_AMRWBE_NR_16s_I(val, scale.value(), pSrcDstSignal.m_16s, len.value(), pMem.m_16s))
VK_REG(TimSinthWBE, veksSynthesisFilter_AMRWBE_16s32s_I,
       veksSynthesisFilter_AMRWBE_16s32s_I(pSrcLpc.m_16s, valLpcOrder.value(), pSrcExcitation.m_16s,
                                           pSrcDstSignal.m_32s + valLpcOrder.value(), len.value()))
