#include "fault.h"

#include <cstring>

namespace krlab {

std::string systemCause(int error) {
    return std::strerror(error);
}

} // namespace krlab
