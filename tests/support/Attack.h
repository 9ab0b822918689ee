// Attacks as files: what is large is written as a recipe.
#pragma once

#include <sys/resource.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace fuzz {

/// The bytes of a file; none when it cannot be read.
std::string contentOf(const std::filesystem::path& path);

/// The message that a file stands for: what it contains, unless it is named ".recipe".
std::string attack(const std::filesystem::path& path, int scale = 1);

/// The message of a recipe. "@{N|text}" is the text N times the scale, "@{=N|text}" N times. The
/// text may hold such groups itself. In it "#" is the number of the time and "##" is "#". A first
/// line "@iconv NAME" asks for another encoding than UTF-8; "@raw" says that the bytes are none
/// that an editor keeps.
std::string expanded(std::string_view recipe, int scale);

struct Cost {
  /// Without a signal, and with status 0.
  bool ended;
  /// Of CPU time.
  double seconds;
  /// At the peak.
  long kilobytes;
};

/// The cost of a process of its own that does nothing but this, and is ended after five minutes and
/// at these limits of CPU time and address space.
Cost costOf(const std::function<void()>& work, rlim_t mostSeconds = RLIM_INFINITY,
            rlim_t mostBytes = RLIM_INFINITY);

/// The peak memory in KB; -1 when it does not end by itself.
long peakOf(const std::function<void()>& work);

}  // namespace fuzz
