#pragma once

#include <string_view>

namespace kestrelink {

/// The library's version, set by the build. The shared library does not export these constants.
inline constexpr std::string_view SAMLVersionString = KESTRELINK_VERSION;
inline constexpr double SAMLVersionNumber = KESTRELINK_VERSION_NUMBER;

}  // namespace kestrelink
