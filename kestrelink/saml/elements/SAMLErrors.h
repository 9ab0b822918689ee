// The errors of the SAML layer: their domain, codes and keys.
#pragma once

#include <cstdint>
#include <string_view>

#include "kestrelink/platform/Export.h"

namespace kestrelink {

/// The domain; `SAMLParserErrorCode` has its codes.
KESTRELINK_EXPORT extern const std::string_view SAMLParserErrorDomain;

/// The codes of `SAMLParserErrorDomain`, the SAML layer.
enum SAMLParserErrorCode : std::int64_t {
  /// The text is not UTF-8.
  kSAMLParserErrorNotUtf8 = 100,
  /// The document's root is not the element expected; `kReceivedClassKey` names its class.
  kSAMLParserErrorWrongRoot = 102,
  /// `createElement` was called on a class that has none of its own.
  kSAMLParserErrorNoMaker = 201,
  /// There are assertions, none is valid, and none reported an error. No class of the library does
  /// this.
  kSAMLParserErrorNoValidAssertion = 400,
  /// An authentication has expired, or the current time is outside an assertion's time window.
  kSAMLParserErrorTime = 401,
  /// `SAMLSignature::isValid` returned false. The library's own always returns true.
  kSAMLParserErrorSignature = 500,
};

/// Key of the class name in an error `kSAMLParserErrorWrongRoot`. Kept as it is spelt: clients
/// match this text.
inline constexpr std::string_view kReceivedClassKey = "recievedClass";

/// A key of `ErrorInfo::info` for detailed errors. No error uses it.
KESTRELINK_EXPORT extern const std::string_view SAMLParserDetailedErrorsKey;

}  // namespace kestrelink
