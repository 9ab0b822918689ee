#pragma once

#include <string_view>

namespace kestrelink {

/// The library's version, as the build names it; not exported.
inline constexpr std::string_view SAMLVersionString = KESTRELINK_VERSION;
inline constexpr double SAMLVersionNumber = KESTRELINK_VERSION_NUMBER;

}  // namespace kestrelink
