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

/// The library's front door.
///
///     std::optional<ErrorInfo> error;
///     auto response = SAMLParserController::sharedInstance().parseResponse(xml, &error);
///     if (!response) report(error);
///     auto request = SAMLParserController::sharedInstance().newAuthNRequest("https://tv.example");
///
/// It holds the SAML 2.0 protocol schema, against which it validates every answer it reads. When
/// the schema is missing from the library's resource bundle, messages are read without validation
/// and nothing is reported: a client notices by asking `schema`, which then answers null.
///
/// Threads: every operation but `setSchemaData` may be called from several threads at once.
class KESTRELINK_EXPORT SAMLParserController {
 public:
  /// The one controller that is shared, made on first use.
  static SAMLParserController& sharedInstance();

  /// Reads the schema from the resource bundle.
  SAMLParserController();
  ~SAMLParserController();
  SAMLParserController(const SAMLParserController&) = delete;
  SAMLParserController& operator=(const SAMLParserController&) = delete;

  /// Reads a provider's answer: the XML text in UTF-8. Null when it is rejected; the error then
  /// holds the last one written, which for an answer whose assertion has no conditions is none:
  ///
  /// - the text is not UTF-8 (`SAMLParserErrorDomain` 100), yields no XML ("XMLWrapperErrorDomain"
  ///   200) or is not valid against the schema ("XMLWrapperErrorDomain" 100, described);
  /// - its root is no response (102);
  /// - it has assertions and now is in the time window of none (401);
  /// - it has assertions and none is valid (401, 400), as when the authentication has ended.
  ///
  /// The error may also hold something when the answer is accepted: what kept an earlier of its
  /// assertions from being the one.
  ///
  /// An accepted answer may still say no: ask `SAMLResponse::expectedAction`. No signature is
  /// verified: whoever needs trust in the answer verifies it first.
  std::shared_ptr<SAMLResponse> parseResponse(std::string_view response,
                                              ErrorOut error = nullptr) const;

  /// The same without the time window: for an answer that the client kept. A root that is no
  /// response is not rejected here; it leaves code 102, and the document has no `responseElement`.
  std::shared_ptr<SAMLResponse> parseCachedResponse(std::string_view response,
                                                    ErrorOut error = nullptr) const;

  /// The four requests, ready to be filled in further and written with `xmlString`. Each has a
  /// fresh identifier and now as its instant.
  std::shared_ptr<SAMLAuthNRequest> newAuthNRequest(std::string_view issuer,
                                                    ErrorOut error = nullptr) const;
  std::shared_ptr<SAMLAttributeQuery> newAttributeQuery(std::string_view channelId,
                                                        ErrorOut error = nullptr) const;
  /// The resource is a URL's text, written as it stands.
  std::shared_ptr<SAMLAuthZDecisionQuery> newAuthZQuery(std::string_view resource,
                                                        std::string_view channelId,
                                                        ErrorOut error = nullptr) const;
  std::shared_ptr<SAMLLogoutRequest> newLogoutRequest(ErrorOut error = nullptr) const;

  /// The text's bytes; null with code 100 of `SAMLParserErrorDomain` when it is not UTF-8.
  SharedBytes dataFromString(std::string_view text, ErrorOut error = nullptr) const;

  /// The bytes of the schema, or null.
  const SharedBytes& schema() const;
  const SharedBytes& schemaData() const;
  void setSchemaData(SharedBytes schema);

 private:
  std::shared_ptr<SAMLResponse> readResponse(std::string_view response, ErrorOut error) const;

  SharedBytes schemaData_;
};

}  // namespace kestrelink
