// Around a section that a fault leaves by a jump.
#pragma once

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
// The jump out of a fault leaves the text objects of the interrupted functions behind.
using NoLeakCheck = __lsan::ScopedDisabler;
#else
struct NoLeakCheck {};
#endif
