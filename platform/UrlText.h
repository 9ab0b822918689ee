// The little that the library asks of a URL's text (RFC 3986).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// The URL's absolute text, which is the text itself; absent when it is empty or no URL.
std::optional<std::string> absoluteUrlText(std::string_view url);

/// The last component of the URL's path, without query and fragment; empty when the path has none.
/// It never holds a "/", but it may be "..".
std::string_view lastPathComponent(std::string_view url);

}  // namespace kestrelink
