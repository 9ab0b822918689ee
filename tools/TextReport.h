#pragma once

#include <string>

#include "Reading.h"

namespace ksaml {

/// The reading for people: verdict first, then the answers.
std::string textReport(const Reading& reading, const ReadOptions& options, bool colour);

}  // namespace ksaml
