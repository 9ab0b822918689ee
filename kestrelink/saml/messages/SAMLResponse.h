#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLResponseElement.h"
#include "kestrelink/xml/XMLWrapperDoc.h"

namespace kestrelink {

/// What the client should do next.
enum SAMLExpectedAction : std::int64_t {
  SAMLExpectedActionNone = 0,       ///< unknown status, or a failure the client cannot resolve
  SAMLExpectedActionProceed = 1,    ///< success
  SAMLExpectedActionPresentUI = 2,  ///< show the provider's sign-in user interface
};

/// An identity provider's "Response" or "LogoutResponse" (SAML 2.0 core, sections 3.3.3 and 3.7.2).
/// Clients get it from `SAMLParserController`, which returns only accepted responses.
///
///     auto response = SAMLParserController::sharedInstance().parseResponse(text, &error);
///     if (response && response->expectedAction() == SAMLExpectedActionProceed)
///       welcome(response->userName());
///
/// Every result is computed from the element tree on each call. No signature is verified.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLResponse : public XMLWrapperDoc {
 public:
  using AttributeValues = std::map<std::string, std::vector<std::string>, std::less<>>;

  /// Parses the bytes and, with schema bytes, validates them. Null with the errors of
  /// `XMLWrapperDoc::initWithData`. When the root is another element, the document is returned with
  /// `kSAMLParserErrorWrongRoot` and without a `responseElement`.
  [[nodiscard]] static std::shared_ptr<SAMLResponse> initWithData(SharedBytes data,
                                                                  SharedBytes schema,
                                                                  ErrorOut error = nullptr);

  explicit SAMLResponse(Making);
  ~SAMLResponse() override;

  /// The root element; null when it is not a response.
  const std::shared_ptr<SAMLResponseElement>& responseElement() const;
  void setResponseElement(std::shared_ptr<SAMLResponseElement> element);

  /// The assertions in document order; `std::nullopt` for a logout response and without a
  /// `responseElement`.
  std::optional<SAMLResponseElement::Assertions> assertions() const;

  /// Attribute values by name, as the provider sent them: those of the first assertion's first
  /// attribute statement. Of two attributes with the same name the later is kept.
  AttributeValues attributes() const;
  /// The values of the attribute with exactly that name; `std::nullopt` when there is none.
  std::optional<std::vector<std::string>> attributeValuesForName(std::string_view name) const;
  /// The first value of the attribute "username", if any.
  std::optional<std::string> userName() const;

  /// The identity provider's identifier: the text of the root's own "Issuer".
  std::optional<std::string> selectedProvider() const;
  /// The subject of the first assertion that has one, or null.
  std::shared_ptr<SAMLSubject> subject() const;

  /// Whether some valid assertion has a valid authentication statement.
  [[nodiscard]] bool hasValidAuthentication() const;
  /// When the authentication expires: an instant, not a duration. "SessionNotOnOrAfter" of the
  /// first authentication statement; `std::nullopt` when it is missing or does not parse.
  std::optional<SAMLDate> authenticationTTL() const;
  /// The "SessionIndex" of the first authentication statement.
  std::optional<std::string> authenticationSessionId() const;

  /// Whether there are no assertions, or the time window of one of them includes the current time:
  /// see `SAMLResponseElement::assertionMeetsConditions`. Without a `responseElement` false, and
  /// the error is not changed.
  [[nodiscard]] bool assertionMeetsConditions(ErrorOut error = nullptr) const;
  /// Whether there are no assertions, or one of them is valid (`SAMLAssertion::isValid`). If not,
  /// the error is the last one that an assertion reported (`kSAMLParserErrorTime`), or else
  /// `kSAMLParserErrorNoValidAssertion`; `kSAMLParserErrorSignature` for the response's own
  /// signature.
  [[nodiscard]] bool isValid(ErrorOut error = nullptr) const;

  /// The status codes (URIs), top level first; the list ends at a code without a value.
  std::vector<std::string> statusCodes() const;
  std::optional<std::string> primaryStatusCode() const;
  SAMLExpectedAction expectedAction() const;

  /// The decision as it was sent ("Permit", "Deny" or "Indeterminate"), from the first assertion
  /// that has one for exactly that resource; `std::nullopt` when there is none.
  std::optional<std::string> authorizationStatusForResource(std::string_view resource) const;

 private:
  SAMLResponseElement::Assertions assertionsOrNone() const;

  std::shared_ptr<SAMLResponseElement> responseElement_;
};

}  // namespace kestrelink
