#include "text.h"

#include "fault.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace krlab {

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    size_t start = 0;
    for (size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator, start)) {
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::optional<double> numberOf(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<long long> integerOf(std::string_view text) {
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::string readFile(const std::string& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throw Fault(file, "this is a directory; a file is wanted");
    }
    // A device may never come to its end; a pipe does.
    if (std::filesystem::is_character_file(file, error) || std::filesystem::is_block_file(file, error)) {
        throw Fault(file, "this is a device; a file is wanted");
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw Fault(file, "can't be read: " + systemCause(errno));
    }
    std::string text;
    char block[65536];
    while (in.read(block, sizeof block) || in.gcount() > 0) {
        text.append(block, static_cast<size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw Fault(file, "reading it failed: " + systemCause(errno));
    }
    return text;
}

} // namespace krlab
