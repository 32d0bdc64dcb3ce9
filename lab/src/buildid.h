// The build-id of a program or shared object.
#pragma once

#include <string>
#include <string_view>

namespace krlab {

/// Hexadecimal digits of the note that linkers write with --build-id; empty if the file has none or is no 64-bit ELF
/// file.
std::string buildIdOf(std::string_view file);

} // namespace krlab
