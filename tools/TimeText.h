#pragma once

#include <chrono>
#include <string>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace ksaml {

/// The date as messages carry it.
std::string dateText(const kestrelink::SAMLDate& date);

/// A span of time in its two largest units: "3 days 4 hours".
std::string spanText(std::chrono::seconds span);

}  // namespace ksaml
