// The machine reports as tests of the list, so that selection reaches them and their text stands among the results.
// Where their facts come from: krcpuid for the processor, krinfo for host and system.
#pragma once

#include "krcpuid.h"
#include "krtest.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the names are documented ones.

/// A test that measures nothing and prints at every output level. Its result is OK.
class __krInfoTest : public krTest {
public:
    __krInfoTest(const krString& name, const krString& file, const krString& info);
    virtual void printInformation() = 0;
    void loopData() override;
    void outputRegInfo() override {}
};

/// Everything that the processor says about itself.
class __krOrvanCpuTest : public __krInfoTest {
public:
    using __krInfoTest::__krInfoTest;
    void printInformation() override;

private:
    static void printShortForm();
    static void printHeader();
    static void printSignature();
    static void printFlags();
    static void printMultiThreading();
    static void printCacheParms();
    static bool printCacheParms(int index);
    static void printL2Features();
};

class __krOSTest : public __krInfoTest {
public:
    using __krInfoTest::__krInfoTest;
    void printInformation() override;
};

class __krHostTest : public __krInfoTest {
public:
    using __krInfoTest::__krInfoTest;
    void printInformation() override;
};

// NOLINTEND(bugprone-reserved-identifier)

// Separators of 79 characters and a newline.
extern const char* doubleLine;
extern const char* singleLine;
extern const char* starLine;
