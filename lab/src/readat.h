// Fields of a binary file that was read whole.
#pragma once

#include <cstring>
#include <string_view>

namespace krlab {

/// Copies a field from its place in the file; false if the file does not reach that far.
template <typename T>
bool readAt(std::string_view file, size_t offset, T& value) {
    if (offset > file.size() || file.size() - offset < sizeof value) {
        return false;
    }
    std::memcpy(&value, file.data() + offset, sizeof value);
    return true;
}

} // namespace krlab
