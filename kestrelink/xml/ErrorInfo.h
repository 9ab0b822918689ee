#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// The codes of "XMLWrapperErrorDomain", the XML layer.
enum XMLWrapperErrorCode : std::int64_t {
  /// The document is not valid against the schema, or could not be validated; described under
  /// `kLocalizedDescriptionKey`.
  kXMLWrapperErrorNotValid = 100,
  /// A document, root element or buffer could not be made while writing XML.
  kXMLWrapperErrorNotWritten = 101,
  /// The bytes yield no XML tree, or parsing them would take too much time or memory.
  kXMLWrapperErrorNoTree = 200,
  /// An XPath evaluation could not be prepared.
  kXMLWrapperErrorXPathNotPrepared = 201,
  /// An attribute could not be written.
  kXMLWrapperErrorAttributeNotWritten = 204,
  /// A namespace declaration could not be written.
  kXMLWrapperErrorNamespaceNotWritten = 205,
  /// The XPath expression could not be evaluated: syntax, unknown prefix or function.
  kXMLWrapperErrorXPathNotEvaluated = 300,
  /// The XPath result is a number, a string or a boolean, not a set of nodes.
  kXMLWrapperErrorXPathNoNodeSet = 301,
};

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

/// Why an operation failed: a domain and one of its codes. Running out of memory is not reported
/// here: the operation throws `std::bad_alloc`, except with `kXMLWrapperErrorNotWritten`,
/// `kXMLWrapperErrorXPathNotPrepared` and `kXMLWrapperErrorXPathNotEvaluated`.
///
///     if (error && error->domain == SAMLParserErrorDomain && error->code == kSAMLParserErrorTime)
struct ErrorInfo {
  std::string domain;
  std::int64_t code = 0;
  /// Empty for most errors; else one entry under `kLocalizedDescriptionKey` or `kReceivedClassKey`.
  std::map<std::string, std::string, std::less<>> info;

  bool operator==(const ErrorInfo&) const = default;
};

/// Where an operation stores its error; null when the caller does not want it. Check the result
/// first: an operation that succeeds may leave the error of a step that did not matter.
using ErrorOut = std::optional<ErrorInfo>*;

inline constexpr std::string_view kXMLWrapperErrorDomain = "XMLWrapperErrorDomain";

/// Key of the text that describes an error.
inline constexpr std::string_view kLocalizedDescriptionKey = "localizedDescription";

/// Key of the class name in an error `kSAMLParserErrorWrongRoot`. Kept as it is spelt: clients
/// match this text.
inline constexpr std::string_view kReceivedClassKey = "recievedClass";

}  // namespace kestrelink
