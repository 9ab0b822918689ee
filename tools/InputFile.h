#pragma once

#include <optional>
#include <string>

namespace ksaml {

/// The bytes of a file, or of standard input for "-"; `std::nullopt`, with a line on standard error, when
/// they cannot be read.
std::optional<std::string> readInput(const std::string& path);

/// Whether all that was printed on standard output got there; a line on standard error if not.
bool finishedOutput();

}  // namespace ksaml
