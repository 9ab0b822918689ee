#pragma once

#include <string_view>

namespace kestrelink {

/// The text of the exported constant `SAMLParserErrorDomain`, for the rooms below the one that
/// exports it. The codes are listed at `ErrorInfo`.
inline constexpr std::string_view kSAMLParserErrorDomain = "SAMLParserErrorDomain";

}  // namespace kestrelink
