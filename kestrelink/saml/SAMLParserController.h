#pragma once

#include <memory>
#include <string_view>

#include "kestrelink/platform/Export.h"
#include "kestrelink/platform/SharedBytes.h"
#include "kestrelink/saml/messages/SAMLAttributeQuery.h"
#include "kestrelink/saml/messages/SAMLAuthNRequest.h"
#include "kestrelink/saml/messages/SAMLAuthZDecisionQuery.h"
#include "kestrelink/saml/messages/SAMLLogoutRequest.h"
#include "kestrelink/saml/messages/SAMLResponse.h"
#include "kestrelink/xml/ErrorInfo.h"

namespace kestrelink {

/// Parses responses and creates requests. Start here.
///
///     std::optional<ErrorInfo> error;
///     auto response = SAMLParserController::sharedInstance().parseResponse(xml, &error);
///     if (!response) report(error);
///     auto request = SAMLParserController::sharedInstance().newAuthNRequest("https://tv.example");
///
/// It holds the SAML 2.0 protocol schema and validates every response against it. When the schema
/// is missing from the library's resource bundle or cannot be read, responses are read without
/// validation and no error is reported. `schema()` then returns null, and the diagnostic log has
/// the reason, once in a process.
///
/// Threads: every operation except `setSchemaData` may be called from several threads at once.
class KESTRELINK_EXPORT SAMLParserController {
 public:
  /// The shared controller, created on first use.
  static SAMLParserController& sharedInstance();

  /// Reads the schema from the resource bundle. Throws `std::bad_alloc` also when it cannot be read
  /// at this moment, such as when no file descriptor is left: then try again.
  SAMLParserController();
  ~SAMLParserController();
  SAMLParserController(const SAMLParserController&) = delete;
  SAMLParserController& operator=(const SAMLParserController&) = delete;

  /// Parses a provider's response: XML text in UTF-8. Null when it is rejected, with the error
  ///
  /// - `kSAMLParserErrorNotUtf8`: the text is not UTF-8;
  /// - `kXMLWrapperErrorNoTree`: the text is empty, its declared encoding is unknown, or parsing it
  ///   would take too much time or memory;
  /// - `kXMLWrapperErrorNotValid`: it is not valid against the schema; `ErrorInfo::info` says why;
  /// - `kSAMLParserErrorWrongRoot`: the root element is not a response;
  /// - `kSAMLParserErrorTime`: no assertion has a time window that includes the current time, or
  ///   the authentication of every assertion has expired;
  /// - none: no assertion has conditions, or, without a schema, the text is not XML.
  ///
  /// An error may also be set when the response is accepted: that of an assertion before the
  /// accepted one. docs/rejected.md has every code with what to do.
  ///
  /// An accepted response may still be a denial: see `SAMLResponse::expectedAction`. No signature
  /// is verified: verify the response first.
  [[nodiscard]] std::shared_ptr<SAMLResponse> parseResponse(std::string_view response,
                                                            ErrorOut error = nullptr) const;

  /// The same without the check of time windows, for a response that the client stored. A root that
  /// is not a response is not rejected: the error is `kSAMLParserErrorWrongRoot`, and the document
  /// has no `responseElement`.
  [[nodiscard]] std::shared_ptr<SAMLResponse> parseCachedResponse(std::string_view response,
                                                                  ErrorOut error = nullptr) const;

  /// The four requests, to be filled in further and written with `xmlString`. Each has a new
  /// identifier and the current time as "IssueInstant". Never null.
  [[nodiscard]] std::shared_ptr<SAMLAuthNRequest> newAuthNRequest(std::string_view issuer,
                                                                  ErrorOut error = nullptr) const;
  [[nodiscard]] std::shared_ptr<SAMLAttributeQuery> newAttributeQuery(
      std::string_view channelId, ErrorOut error = nullptr) const;
  /// The resource is a URL, written unchanged.
  [[nodiscard]] std::shared_ptr<SAMLAuthZDecisionQuery> newAuthZQuery(
      std::string_view resource, std::string_view channelId, ErrorOut error = nullptr) const;
  [[nodiscard]] std::shared_ptr<SAMLLogoutRequest> newLogoutRequest(ErrorOut error = nullptr) const;

  /// The text's bytes; null with `kSAMLParserErrorNotUtf8` when it is not UTF-8.
  SharedBytes dataFromString(std::string_view text, ErrorOut error = nullptr) const;

  /// The bytes of the schema; null when there is none.
  const SharedBytes& schema() const;
  const SharedBytes& schemaData() const;
  void setSchemaData(SharedBytes schema);

 private:
  std::shared_ptr<SAMLResponse> readResponse(std::string_view response, ErrorOut error) const;

  SharedBytes schemaData_;
};

}  // namespace kestrelink
