// The base of all tests of library functions: a krTest with the function's name read as grammar, the one rule that
// turns a library status into a result, and the dump of the test's memory. Registration is in vkreg.
#pragma once

#include "krtest.h"
#include "vekdefs.h"
#include "vkcache.h"
#include "vkfunc.h"
#include "vkvector.h"

/// Base of two-dimensional data, for the cache states of a domain that has such.
class vkImage : public krObject {};

/// Three cells of the table: base with prefix, types, descriptor.
void vkNameCells(const krString& name);

class vkTest : public krTest {
public:
    vkTest(krFuncCall funcCall, krFuncCall funcInit, krFuncLoop funcLoop, krFuncStat funcStat, const krString& name,
           const krString& file, const krString& info);

    bool tobeRun(krConditions& conditions) override { return krTest::tobeRun(conditions); }
    /// Starts every test from the same seed of random data.
    krResult run() override;
    /// The order of function names.
    int compareFunc(const krTest* other) const override;
    /// Base with prefix, types and descriptor: three cells.
    void funcToCstrm() override;
    bool isFloatFunction() override;
    int printAllMemoryBlocks(const krString& title) override;
    krString regInfo() override;

    virtual void printFirstDebugLine(const krString& title);
    virtual void printLastDebugLine(const krString& title);
    virtual void printFirstBlockLine(int number, krObject* owner, int size);
    virtual void printLastBlockLine(int number, krObject* owner);
    virtual void printVectorBlock(vkVector* vector);
    virtual void printByteBlock(void* data, int size);

    /// 0: OK; negative: reported, FUNCFAIL; positive: reported, FUNCWRN. Raises the result of the test in work.
    static krResult checkStatus(int status, const krString& name);
    krResult checkStatus(int status) const { return checkStatus(status, m_func); }

    /// The entry of two-dimensional data to the cache states; the parameter that was appended.
    krParameter* regCacheParm(krIterator<VekiSize>& size, vkImage& image, krCacheSetFunc valid);
    krParameter* regCacheParm(krIterator<VekiSize>& size, krCacheSetFunc valid);
    using krTest::regCacheParm;

    vkFunc m_func;
    /// Positive statuses are ignored; cleared before each run.
    static bool m_checkErrorsOnly;

private:
    krParameter* regCacheSize(krIterator<VekiSize>& size, krObject* object, krCacheSetFunc valid);
};

/// A test of the speech domain, with a second form of the table row beside the one that runs write.
class prTest : public vkTest {
public:
    using vkTest::vkTest;
    virtual void resultTitleToCStream();
    using krTest::resultToCstrm;
    virtual void resultToCstrm();
    /// Divisor of the time per element in the second form.
    virtual double getDivisor_el() { return 1.0; }
};
