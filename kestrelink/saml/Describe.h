#pragma once

#include <optional>
#include <string_view>

#include "kestrelink/saml/SAMLConstants.h"
#include "kestrelink/xml/ErrorInfo.h"

namespace kestrelink {

namespace detail {

inline std::string_view describeNotValid(const ErrorInfo& error) {
  const auto entry = error.info.find(kLocalizedDescriptionKey);
  const std::string_view faults = entry == error.info.end() ? "" : std::string_view(entry->second);
  // libxml2's code for a document without an element; its words may change.
  if (faults.starts_with("ERROR 1872:")) return "the text is not XML";
  if (faults.starts_with("ERROR ")) return "it is not valid against the schema";
  return "it could not be validated: the schema cannot be used";
}

inline std::string_view describeXml(const ErrorInfo& error) {
  switch (static_cast<XMLWrapperErrorCode>(error.code)) {
    case kXMLWrapperErrorNotValid:
      return describeNotValid(error);
    case kXMLWrapperErrorNotWritten:
      return "the XML could not be written";
    case kXMLWrapperErrorNoTree:
      return "there is no XML in it, or parsing it would take too much time or memory";
    case kXMLWrapperErrorXPathNotPrepared:
      return "the XPath evaluation could not be prepared";
    case kXMLWrapperErrorAttributeNotWritten:
      return "an attribute could not be written";
    case kXMLWrapperErrorNamespaceNotWritten:
      return "a namespace could not be declared";
    case kXMLWrapperErrorXPathNotEvaluated:
      return "the XPath expression could not be evaluated";
    case kXMLWrapperErrorXPathNoNodeSet:
      return "the result of the XPath expression is not a set of nodes";
  }
  return {};
}

inline std::string_view describeSaml(const ErrorInfo& error) {
  switch (static_cast<SAMLParserErrorCode>(error.code)) {
    case kSAMLParserErrorNotUtf8:
      return "the text is not UTF-8";
    case kSAMLParserErrorWrongRoot:
      return "its root element is not the message that is expected";
    case kSAMLParserErrorNoMaker:
      return "elements of this class cannot be created";
    case kSAMLParserErrorNoValidAssertion:
      return "it has assertions, but none is valid";
    case kSAMLParserErrorTime:
      return "no assertion's time window includes the current time, or every authentication has "
             "expired or has no end";
    case kSAMLParserErrorSignature:
      return "a signature is not valid";
  }
  return {};
}

}  // namespace detail

/// The error in an English sentence, without a capital and a full stop. It quotes nothing of the
/// message, so it may be logged. What the schema found is under `kLocalizedDescriptionKey` in
/// `ErrorInfo::info`, and quotes the message.
[[nodiscard]] inline std::string_view describe(const ErrorInfo& error) {
  std::string_view sentence;
  if (error.domain == kXMLWrapperErrorDomain) sentence = detail::describeXml(error);
  if (error.domain == SAMLParserErrorDomain) sentence = detail::describeSaml(error);
  return sentence.empty() ? "the error is unknown" : sentence;
}

/// The same for the error of a parsed response that is null. Without an error it says why
/// `parseResponse` returns null without one.
///
///     const auto response = controller.parseResponse(text, &error);
///     if (!response) std::cerr << "rejected: " << describe(error) << "\n";
[[nodiscard]] inline std::string_view describe(const std::optional<ErrorInfo>& error) {
  return error ? describe(*error) : "no assertion has conditions, or the text is not XML";
}

}  // namespace kestrelink
