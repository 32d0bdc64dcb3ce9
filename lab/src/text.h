// Small operations on text that several readers share.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// Without blanks, tabs and carriage returns at both ends.
std::string_view trimmed(std::string_view text);
/// The pieces between separators; always at least one.
std::vector<std::string_view> split(std::string_view text, char separator);
/// The whole of the text as a finite number, or nothing.
std::optional<double> numberOf(std::string_view text);
/// The whole of the text as an integer, or nothing.
std::optional<long long> integerOf(std::string_view text);
/// A whole file. Throws Fault with the cause if it can't be read, is a directory or a device.
std::string readFile(const std::string& file);

} // namespace krlab
