#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// The URL's absolute text (RFC 3986), which is the text itself; absent when it is empty or no URL.
std::optional<std::string> absoluteUrlText(std::string_view url);

}  // namespace kestrelink
