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

/// Why an operation failed: a domain and one of its codes. Running out of memory is not reported
/// here: the operation throws `std::bad_alloc`, except with `kXMLWrapperErrorNotWritten`,
/// `kXMLWrapperErrorXPathNotPrepared` and `kXMLWrapperErrorXPathNotEvaluated`.
///
///     if (error && error->domain == kXMLWrapperErrorDomain &&
///         error->code == kXMLWrapperErrorNoTree)
struct ErrorInfo {
  std::string domain;
  std::int64_t code = 0;
  /// Empty for most errors; else one entry, whose key the comment on the code names.
  std::map<std::string, std::string, std::less<>> info;

  bool operator==(const ErrorInfo&) const = default;
};

/// Where an operation stores its error; null when the caller does not want it. Check the result
/// first: an operation that succeeds may leave the error of a step that did not matter.
using ErrorOut = std::optional<ErrorInfo>*;

inline constexpr std::string_view kXMLWrapperErrorDomain = "XMLWrapperErrorDomain";

/// Key of the text that describes an error.
inline constexpr std::string_view kLocalizedDescriptionKey = "localizedDescription";

}  // namespace kestrelink
