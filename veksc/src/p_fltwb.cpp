// Emphasis and synthesis of the wide-band codec and of its extension.
#include "vkc.h"

namespace {

vkVector pSrcSignal;
vkVector pDstSignal;
vkVector pSrcDstSignal;
vkVector pMem;
vkVector pSrcLpc;
vkVector pSrcExcitation;
krStepIterator<int> len;
krStepIterator<int> valLpcOrder;
krStepIterator<int> scale;
vkcGrid grid;

constexpr Vek16s val = 22282; // 0.68

void createDeemphasis(const vkFunc& func) {
    pSrcSignal.init(func, vkArg::src);
    pSrcDstSignal.init(func, vkArg::src);
    pDstSignal.init(func, vkArg::dst);
    pMem.init(func, vkArg::dst);
}

bool createDeemphasisData() {
    return pSrcSignal.createVector(len.value(), setRand, -65536, 65536) &&
           pSrcDstSignal.createVector(len.value(), setRand, -65536, 65536) &&
           pDstSignal.createVector(len.value(), setZero, 0, 0) && pMem.createVector(1, setRand, -4096, 4096);
}

void deleteDeemphasisData() {
    for (vkVector* vector : {&pMem, &pDstSignal, &pSrcDstSignal, &pSrcSignal}) {
        vector->deleteVector();
    }
}

void createSynthesis(const vkFunc& func) {
    pSrcLpc.init(func, vkArg::src);
    pSrcExcitation.init(func, vkArg::src);
    pSrcDstSignal.init(func, vkArg::dst);
}

// The outputs before the first stand ahead of those of the call.
bool createSynthesisData() {
    return pSrcDstSignal.createVector(grid.room(valLpcOrder) + vkcSize(len), setRand, -65536, 65536) &&
           pSrcLpc.createVector(grid.room(valLpcOrder) + 1, setRand, -4096, 4096) &&
           pSrcExcitation.createVector(len.value(), setRand, -4096, 4096);
}

void deleteSynthesisData() {
    for (vkVector* vector : {&pSrcExcitation, &pSrcLpc, &pSrcDstSignal}) {
        vector->deleteVector();
    }
}

class TimDeemphWB : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimDeemphWB::canStart() {
    vkcRebuild(len, "Lenght").set(32, 256, 32, '+');
    grid.begin({&len});
    createDeemphasis(m_func);
    return true;
}

bool TimDeemphWB::makeData() {
    return createDeemphasisData();
}

void TimDeemphWB::flushData() {
    deleteDeemphasisData();
}

class TimSinthWB : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return static_cast<double>(len.value()) * valLpcOrder.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimSinthWB::canStart() {
    vkcRebuild(len, "Lenght").set(32, 128, 32, '+');
    vkcRebuild(valLpcOrder, "valLpcOrder").set(8, 24, 8, '+');
    grid.begin({&len, &valLpcOrder});
    createSynthesis(m_func);
    return true;
}

bool TimSinthWB::makeData() {
    return createSynthesisData();
}

void TimSinthWB::flushData() {
    deleteSynthesisData();
}

class TimDeemphWBE : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return len.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimDeemphWBE::canStart() {
    vkcRebuild(scale, "scale").set(13, 15, 1, '+');
    vkcRebuild(len, "Lenght").set(32, 256, 32, '+');
    grid.begin({&scale, &len});
    createDeemphasis(m_func);
    return true;
}

bool TimDeemphWBE::makeData() {
    return createDeemphasisData();
}

void TimDeemphWBE::flushData() {
    deleteDeemphasisData();
}

class TimSinthWBE : public prTest {
public:
    using prTest::prTest;
    bool canStart() override;
    bool canContinue() override { return grid.next(m_isFirst) && vkcLine(*this); }
    bool makeData();
    void flushData() override;
    double getDivisor() override { return static_cast<double>(len.value()) * valLpcOrder.value(); }
    double getDivisor_el() override { return getDivisor(); }
    krString getUnit() override { return vkcUnit(vkcElements); }
    void parmsToOstrm() override { grid.toOstrm(); }
    void parmsToCstrm() override { grid.toCstrm(); }
    void parmsNameToCstrm() override { grid.namesToCstrm(); }
};

bool TimSinthWBE::canStart() {
    vkcRebuild(len, "Lenght").set(32, 128, 32, '+');
    vkcRebuild(valLpcOrder, "valLpcOrder").setList({10});
    grid.begin({&len, &valLpcOrder});
    createSynthesis(m_func);
    return true;
}

bool TimSinthWBE::makeData() {
    return createSynthesisData();
}

void TimSinthWBE::flushData() {
    deleteSynthesisData();
}

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
