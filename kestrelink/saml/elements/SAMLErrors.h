#pragma once

#include <string_view>

namespace kestrelink {

/// The text of the exported constant `SAMLParserErrorDomain`, for the layers below the one that
/// exports it.
inline constexpr std::string_view kSAMLParserErrorDomain = "SAMLParserErrorDomain";

}  // namespace kestrelink
