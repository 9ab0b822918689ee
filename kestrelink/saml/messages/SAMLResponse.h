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

template <class Message>
struct MessageDocument;

/// What a response asks the client to do next.
enum SAMLExpectedAction : std::int64_t {
  SAMLExpectedActionNone = 0,       ///< no known status, or a failure the client cannot resolve
  SAMLExpectedActionProceed = 1,    ///< success
  SAMLExpectedActionPresentUI = 2,  ///< show the provider's sign-in user interface
};

/// An identity provider's answer: "Response" or "LogoutResponse" (SAML 2.0 core, sections 3.3.3 and
/// 3.7.2). Clients get it from `SAMLParserController`, which hands out only what it accepted.
///
///     auto response = SAMLParserController::sharedInstance().parseResponse(text, &error);
///     if (response && response->expectedAction() == SAMLExpectedActionProceed)
///       welcome(response->userName());
///
/// Every answer is computed from the element tree on each call. No signature is ever verified.
///
/// Threads: one thread at a time, like every document.
class KESTRELINK_EXPORT SAMLResponse : public XMLWrapperDoc {
 public:
  using AttributeValues = std::map<std::string, std::vector<std::string>, std::less<>>;

  /// Parses the bytes and, with schema bytes, validates them. Null with the errors of
  /// `XMLWrapperDoc::initWithData`. When the root is no response the document is returned all the
  /// same, with code 102 of `SAMLParserErrorDomain`: it has no `responseElement`.
  static std::shared_ptr<SAMLResponse> initWithData(SharedBytes data, SharedBytes schema,
                                                    ErrorOut error = nullptr);

  explicit SAMLResponse(Making);
  ~SAMLResponse() override;

  /// The root as a response, or null when it is none.
  const std::shared_ptr<SAMLResponseElement>& responseElement() const;
  void setResponseElement(std::shared_ptr<SAMLResponseElement> element);

  /// The assertions in document order; absent for a logout response and without a response element.
  std::optional<SAMLResponseElement::Assertions> assertions() const;

  /// Attribute names, as the provider sends them, to values: those of the first assertion's first
  /// attribute statement. Of two attributes with one name the later stands.
  AttributeValues attributes() const;
  /// The values of the attribute of exactly that name; absent when there is none.
  std::optional<std::vector<std::string>> attributeValuesForName(std::string_view name) const;
  /// The first value of the attribute "username".
  std::optional<std::string> userName() const;

  /// The identity provider's identifier: the text of the root's own "Issuer".
  std::optional<std::string> selectedProvider() const;
  /// The subject of the first assertion that has one, or null.
  std::shared_ptr<SAMLSubject> subject() const;

  /// Whether some valid assertion has a valid authentication statement.
  bool hasValidAuthentication() const;
  /// Until when the authentication holds: an instant, not a duration. From the first authentication
  /// statement; absent when it names none or one that does not parse.
  std::optional<SAMLDate> authenticationTTL() const;
  /// The "SessionIndex" of the first authentication statement.
  std::optional<std::string> authenticationSessionId() const;

  /// Whether some assertion's time window contains now, or there are no assertions. See
  /// `SAMLResponseElement::assertionMeetsConditions`; false without touching the error when there
  /// is no response element.
  bool assertionMeetsConditions(ErrorOut error = nullptr) const;
  /// Whether some assertion is valid, or there are none. If not, the error is that of the last
  /// assertion that had one (code 401), else code 400, or 500 for the response's own signature,
  /// all of `SAMLParserErrorDomain`.
  bool isValid(ErrorOut error = nullptr) const;

  /// The status URIs, top level first; the list ends at a code without a value.
  std::vector<std::string> statusCodes() const;
  std::optional<std::string> primaryStatusCode() const;
  SAMLExpectedAction expectedAction() const;

  /// The decision for the resource as it was sent ("Permit", "Deny" or "Indeterminate"), from the
  /// first assertion that has a statement about exactly that text; `std::nullopt` when none has.
  std::optional<std::string> authorizationStatusForResource(std::string_view resource) const;

 private:
  template <class Message>
  friend struct MessageDocument;

  SAMLResponseElement::Assertions assertionsOrNone() const;

  std::shared_ptr<SAMLResponseElement> responseElement_;
};

}  // namespace kestrelink
