#pragma once

#include <string_view>

namespace kestrelink {

/// The last component of the URL's path, without query and fragment; empty when the path has none.
/// It never holds a "/", but it may be "..".
std::string_view lastPathComponent(std::string_view url);

}  // namespace kestrelink
