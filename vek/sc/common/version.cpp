// Version of the speech coding library.
#include "veksc.h"

const VekLibraryVersion* vekscGetLibVersion(void) {
    static const VekLibraryVersion version = {1, 0, 1, 0, "libveksc", "1.0.0", __DATE__};
    return &version;
}
