#pragma once

#include <string>

#include "Reading.h"

namespace ksaml {

/// The reading as one JSON object on one line. Every key is always present; null means that the
/// message has no such value.
std::string jsonReport(const Reading& reading, const ReadOptions& options);

}  // namespace ksaml
