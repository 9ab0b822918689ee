#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelink {

/// Why an operation failed. Memory that runs out, the library's own or libxml2's, is no reason that
/// is told here: the operation throws std::bad_alloc, but for codes 101, 201 and 300.
///
/// Domain "XMLWrapperErrorDomain" (the XML layer):
///
/// | code | when |
/// |---|---|
/// | 100 | the document is not valid against the schema, or could not be validated; described |
/// | 101 | a document, root element or buffer could not be made while writing XML |
/// | 200 | the bytes yield no XML tree at all |
/// | 201 | an XPath evaluation could not be prepared |
/// | 204 | an attribute could not be written |
/// | 205 | a namespace declaration could not be written |
/// | 300 | the XPath expression could not be evaluated (syntax, unknown prefix or function) |
/// | 301 | the XPath result is a number, a string or a boolean, not a set of nodes |
///
/// Domain `SAMLParserErrorDomain` (the SAML layer):
///
/// | code | when |
/// |---|---|
/// | 100 | the text is not UTF-8 |
/// | 102 | the document's root is not the element expected; `kReceivedClassKey` names its class |
/// | 201 | a class without a maker of its own was asked to make an element |
/// | 400 | there are assertions, none is valid, and none said why |
/// | 401 | an authentication statement has expired, or now is outside an assertion's time window |
/// | 500 | a signature element says of itself that it is not valid |
struct ErrorInfo {
  std::string domain;
  std::int64_t code = 0;
  /// Empty for most errors; else one entry under `kLocalizedDescriptionKey` or `kReceivedClassKey`.
  std::map<std::string, std::string, std::less<>> info;

  bool operator==(const ErrorInfo&) const = default;
};

/// Where an operation puts its error; null when the caller does not want it. Look at the result
/// first: an operation of several steps may succeed and leave the error of a step that did not
/// matter.
using ErrorOut = std::optional<ErrorInfo>*;

inline constexpr std::string_view kXMLWrapperErrorDomain = "XMLWrapperErrorDomain";

/// Key of the text that describes an error.
inline constexpr std::string_view kLocalizedDescriptionKey = "localizedDescription";

/// Key of the class name that came with code 102. Kept as it is spelt: clients match this text.
inline constexpr std::string_view kReceivedClassKey = "recievedClass";

}  // namespace kestrelink
