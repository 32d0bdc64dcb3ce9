// SHA-256 of a text (FIPS 180-4), as hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

namespace krlab {

std::string sha256(std::string_view data);

} // namespace krlab
