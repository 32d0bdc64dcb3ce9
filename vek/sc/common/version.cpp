// Version of the speech coding library.
#include "veksc.h"

#include "core/version.h"

const VekLibraryVersion* vekscGetLibVersion(void) {
    static const VekLibraryVersion version = VEK_VERSION_RECORD("libveksc");
    return &version;
}
