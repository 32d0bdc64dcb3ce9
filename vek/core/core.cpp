// The core's own words: version, status texts, threads.
#include "vekcore.h"

#include "core/version.h"

const VekLibraryVersion* vekGetLibVersion(void) {
    static const VekLibraryVersion version = VEK_VERSION_RECORD("libvekcore");
    return &version;
}

const char* vekGetStatusString(VekStatus status) {
    switch (status) {
#define VEK_ROW(name, value, text)                                                                                     \
    case value:                                                                                                        \
        return text;
        VEK_STATUSES(VEK_ROW)
#undef VEK_ROW
    default:
        return "unknown status";
    }
}

VekStatus vekSetNumThreads(int numThreads) {
    if (numThreads < 1) {
        return vekStsSizeErr;
    }
    return numThreads == 1 ? vekStsNoErr : vekStsSingleThread;
}
