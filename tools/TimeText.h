#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace ksaml {

/// The date as messages carry it.
std::string dateText(const kestrelink::SAMLDate& date);

/// The date that such a text names; absent for any other text.
std::optional<kestrelink::SAMLDate> dateFromText(const std::string& text);

/// A span of time in its two largest units: "3 days 4 hours".
std::string spanText(std::chrono::seconds span);

}  // namespace ksaml
