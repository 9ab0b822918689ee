#pragma once

#include <chrono>
#include <string>

namespace ksaml {

/// A span of time in its two largest units: "3 days 4 hours".
std::string spanText(std::chrono::seconds span);

}  // namespace ksaml
