// The base of all tests of library functions.
#include "vktest.h"

#include "krbase.h"
#include "krcputick.h"
#include "krstream.h"

bool vkTest::m_checkErrorsOnly = false;

// Every test sees the same random data in every run.
static constexpr unsigned startSeed = 7;

vkTest::vkTest(krFuncCall funcCall, krFuncCall funcInit, krFuncLoop funcLoop, krFuncStat funcStat, const krString& name,
               const krString& file, const krString& info)
    : krTest(funcCall, funcInit, funcLoop, funcStat, name, file, info), m_func(name) {
}

krResult vkTest::run() {
    m_checkErrorsOnly = false;
    vkVector::m_seed = startSeed;
    return krTest::run();
}

int vkTest::compareFunc(const krTest* other) const {
    return m_func.compare(vkFunc(other->m_name));
}

void vkNameCells(const krString& name) {
    const vkFunc func(name);
    g_cstrm << func.prefix() + func.baseName() << func.typeName() << func.descrName();
}

void vkTest::funcToCstrm() {
    vkNameCells(m_func);
}

bool vkTest::isFloatFunction() {
    return krTest::isFloatFunction() && (m_func.contains("32f") || m_func.contains("64f"));
}

krString vkTest::regInfo() {
    krString text = krTest::regInfo();
    const int place = text.find("KR_");
    if (place >= 0) {
        text = text.substr(0, place) + "VK_" + text.substr(place + 3);
    }
    return text;
}

krResult vkTest::checkStatus(int status, const krString& name) {
    if (status == 0 || (status > 0 && m_checkErrorsOnly)) {
        return krOk;
    }
    return reportStatus(status, name);
}

int vkTest::printAllMemoryBlocks(const krString& title) {
    if (!g_ostrm.beginMessage(DATA)) {
        return 0;
    }
    g_trace.traceIn("printAllMemoryBlocks");
    printFirstDebugLine(title);
    int count = 0;
    int size = 0;
    void* info = nullptr;
    for (void* block = krMallocFirst(&size, &info); block != nullptr; block = krMallocNext(&size, &info)) {
        if (info == nullptr || info == MEM_OBJECT_IS_SUBOBJECT) {
            continue;
        }
        auto* owner = static_cast<krObject*>(info);
        printFirstBlockLine(++count, owner, size);
        if (owner == MEM_OBJECT_IS_BUFFER) {
            printByteBlock(block, size);
        } else {
            printVectorBlock(static_cast<vkVector*>(owner));
        }
        printLastBlockLine(count, owner);
    }
    printLastDebugLine(title);
    g_ostrm.endMessage();
    g_trace.traceOut("printAllMemoryBlocks");
    return count;
}

void vkTest::printFirstDebugLine(const krString& title) {
    g_ostrm << "======== OBJECTS OUTPUT START === " << title << " === OBJECTS OUTPUT START ========\n";
}

void vkTest::printLastDebugLine(const krString& title) {
    g_ostrm << "======== OBJECTS OUTPUT END === " << title << " === OBJECTS OUTPUT END ========\n";
}

void vkTest::printFirstBlockLine(int number, krObject* owner, int size) {
    g_ostrm << "======== Object " << number << ": ";
    if (owner == MEM_OBJECT_IS_BUFFER) {
        g_ostrm << "MemoryBlock size=" << size;
    } else {
        g_ostrm << owner->objectInfo();
    }
    g_ostrm << "\n";
}

void vkTest::printLastBlockLine(int /*number*/, krObject* /*owner*/) {
    g_ostrm << "\n";
}

void vkTest::printVectorBlock(vkVector* vector) {
    g_ostrm << vector->getString() << "\n";
}

void vkTest::printByteBlock(void* data, int size) {
    g_ostrm << vkVector::getByteString(data, size) << "\n";
}

krParameter* vkTest::regCacheSize(krIterator<VekiSize>& size, krObject* object, krCacheSetFunc valid) {
    if (m_cache && m_cacheIter == nullptr) {
        m_cacheIter = new krCacheIteratorSize(size, object, valid);
        m_parms.append(m_cacheIter);
        return m_cacheIter;
    }
    m_parms.append(&size);
    return &size;
}

krParameter* vkTest::regCacheParm(krIterator<VekiSize>& size, vkImage& image, krCacheSetFunc valid) {
    return regCacheSize(size, &image, valid);
}

krParameter* vkTest::regCacheParm(krIterator<VekiSize>& size, krCacheSetFunc valid) {
    return regCacheSize(size, nullptr, valid);
}

void prTest::resultTitleToCStream() {
    g_cstrm << "Comment"
            << "Clocks"
            << "per"
            << "Time(usec)"
            << "Time_el(usec)"
            << "MFlops";
    if (m_hot != 0) {
        g_cstrm << "Interest";
    }
}

void prTest::resultToCstrm() {
    const bool statistic = m_tool.m_method == krTool::Statistic;
    const double time = m_tool.m_funcClocks / (krCpuTicker::getFreq() * 1000000.0) * 1000000000.0;
    g_cstrm << krFormat(statistic ? "nStat=%d" : "nLps=%d", m_tool.m_numLoops) << perfString(false) << getUnit()
            << krFormat("%.3e", time) << krFormat("%.3e", time / getDivisor_el()) << perfString(true)
            << (isHotLine() ? "Hot" : "");
}
