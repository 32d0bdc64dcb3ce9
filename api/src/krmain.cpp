// The entry point.
#include "kr.h"
#include "krbase.h"
#include "krguard.h"
#include "krio.h"
#include "krstream.h"

int main(int argc, char** argv) {
    krHoldConsole();
    krHoldDirectory();
    krGuardProcess([]() -> const krString* {
        const krTest* test = krTestList::m_pCurrentTest;
        return test == nullptr ? nullptr : &test->m_name;
    });
    g_trace.traceIn("main");
    if (pSession == nullptr) {
        pSession = new krSession;
    }
    const int result = pSession->run(argc, argv);
    krFreeAll();
    g_trace.traceOut("main");
    krProcessIsOver();
    return result;
}
