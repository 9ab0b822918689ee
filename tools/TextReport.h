#pragma once

#include <string>

#include "Reading.h"

namespace ksaml {

/// The reading for people: the verdict first, then what the message says.
std::string textReport(const Reading& reading, const ReadOptions& options, bool colour);

}  // namespace ksaml
