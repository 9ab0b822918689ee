// Attacks as files: what is large is written as a recipe.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace fuzz {

/// The bytes of a file; none when it cannot be read.
std::string contentOf(const std::filesystem::path& path);

/// The message that a file stands for: what it contains, unless it is named ".recipe". In a recipe
/// "@{N|text}" is the text N times the scale, "#" in the text being the number of the time. A first
/// line "@iconv NAME" asks for another encoding than UTF-8; "@raw" says that the bytes are none
/// that an editor keeps.
std::string attack(const std::filesystem::path& path, int scale = 1);

/// The peak memory, in KB, of a process of its own that does nothing but this; -1 when it does not
/// end by itself within five minutes.
long peakOf(const std::function<void()>& work);

}  // namespace fuzz
