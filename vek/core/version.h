// The version of the three shared objects: what they say of themselves, and from where the build has their file names.
#pragma once

#define VEK_VERSION "1.0.0"

/// What the library `name` tells as its VekLibraryVersion.
#define VEK_VERSION_RECORD(name)                                                                                       \
    { 1, 0, 1, 0, name, VEK_VERSION, __DATE__ }
