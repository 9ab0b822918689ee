#pragma once

#include <optional>
#include <string>

namespace ksaml {

/// The bytes of a file, or of standard input for "-". `std::nullopt`, with a line on standard
/// error, when they cannot be read.
std::optional<std::string> readInput(const std::string& path);

/// Flushes standard output. False, with a line on standard error, when not everything was written.
bool finishedOutput();

}  // namespace ksaml
