// Directories that nobody else has: of one process, of one task, of one use.
#pragma once

#include <filesystem>
#include <string>

namespace krlab {

/// A new directory whose name begins with `name`. Throws Fault with the cause.
std::filesystem::path makeDirectory(const std::filesystem::path& storage, const std::string& name);

} // namespace krlab
