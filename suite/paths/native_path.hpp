// Paths as the suite writes them, found in the file tree of this machine.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace suite {

// The path of this machine that a suite's path means: "\" separates as "/" does, a relative path starts at
// `base`, and a part that does not exist as written stands for the one that differs in the case of its ASCII
// letters only (the first by name when there are several). What exists nowhere is kept as written, so that
// the result can be created or named in a message.
std::filesystem::path NativePath(std::string_view path, const std::filesystem::path& base);

// The path as it is spelled, without a look at the disk: what NativePath gives when something exists there.
std::string SpelledPath(std::string_view path, std::string_view base);

}  // namespace suite
