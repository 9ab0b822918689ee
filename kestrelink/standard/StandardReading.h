// Reads what the library's own look-ups do not find because they use other names than the standard,
// or have none. Nothing here checks or verifies anything.
//
//     if (isSignedIn(*response)) welcome(subscriberOf(*response));
//     if (encryptedAssertions(*response) > 0) explain("the provider encrypts its assertions");
#pragma once

#ifndef __cpp_rtti
#error "kestrelink/standard needs run-time type information: compile without -fno-rtti"
#endif

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace kestrelink::standard {

/// The value of an attribute of that element; `std::nullopt` when there is none or it has no value.
inline std::optional<std::string> attributeText(const XMLWrapperElement& element,
                                                std::string_view name) {
  const auto attribute = element.attributeWithName(name);
  return attribute ? attribute->value() : std::nullopt;
}

/// The subject's "NameID" (SAML 2.0 core, section 2.2.3), or else its "NameId"; null when it has
/// neither. The identifier itself is the element's `textContent`.
inline std::shared_ptr<XMLWrapperElement> nameIdOf(const SAMLSubject& subject) {
  auto identifier = subject.firstElementByTagName("NameID");
  return identifier ? identifier : subject.firstElementByTagName("NameId");
}

/// The same of the response's `subject()`; null when there is none.
[[nodiscard]] inline std::shared_ptr<XMLWrapperElement> nameIdOf(const SAMLResponse& response) {
  const auto subject = response.subject();
  return subject ? nameIdOf(*subject) : nullptr;
}

/// Whether an accepted response signs a subscriber in: its status is success and its authentication
/// is valid. Audience, recipient and `inResponseTo` remain to be compared.
[[nodiscard]] inline bool isSignedIn(const SAMLResponse& response) {
  return response.expectedAction() == SAMLExpectedActionProceed &&
         response.hasValidAuthentication();
}

/// Who the subscriber is: `userName()`, or else the first value of the attribute
/// `SAMLAttributePropertyNameUserID`, or else the text of `nameIdOf`. Empty texts are passed over;
/// `std::nullopt` when nothing is left.
[[nodiscard]] inline std::optional<std::string> subscriberOf(const SAMLResponse& response) {
  if (auto name = response.userName(); name && !name->empty()) return name;
  const auto values = response.attributeValuesForName(SAMLAttributePropertyNameUserID);
  if (values && !values->empty() && !values->front().empty()) return values->front();
  const auto identifier = nameIdOf(response);
  return identifier ? identifier->textContent() : std::nullopt;
}

/// An authorisation decision statement (SAML 2.0 core, section 2.7.4).
struct Decision {
  std::optional<std::string> resource;
  std::optional<std::string> decision;  ///< "Permit", "Deny" or "Indeterminate", as sent
  std::vector<std::string> actions;
};

/// The decision statements of an assertion, in document order: "AuthzDecisionStatement" and the
/// library's own "AuthzDecisiontStatement".
inline std::vector<Decision> decisionsOf(const SAMLAssertion& assertion) {
  std::vector<Decision> decisions;
  for (const auto& statement : assertion.elements()) {
    const auto& name = statement->tagName();
    if (name != "AuthzDecisionStatement" && name != "AuthzDecisiontStatement") continue;
    Decision decision{
        attributeText(*statement, "Resource"), attributeText(*statement, "Decision"), {}};
    for (const auto& action : statement->getElementsByTagName("Action")) {
      decision.actions.push_back(action->textContent().value_or(""));
    }
    decisions.push_back(std::move(decision));
  }
  return decisions;
}

/// The assertions of the response; none for a logout response.
inline SAMLResponseElement::Assertions assertionsOf(const SAMLResponse& response) {
  return response.assertions().value_or(SAMLResponseElement::Assertions());
}

/// The decision of the first statement with exactly that resource; `std::nullopt` when there is
/// none.
inline std::optional<std::string> decisionForResource(const SAMLResponse& response,
                                                      std::string_view resource) {
  for (const auto& assertion : assertionsOf(response)) {
    for (const Decision& decision : decisionsOf(*assertion)) {
      if (decision.resource == resource) return decision.decision;
    }
  }
  return std::nullopt;
}

/// The number of "EncryptedAssertion" elements in the response (SAML 2.0 core, section 2.3.4). The
/// library does not decrypt: a response with nothing else is accepted and names nobody.
inline std::size_t encryptedAssertions(const SAMLResponse& response) {
  const auto& root = response.documentElement();
  return root ? root->getElementsByTagName("EncryptedAssertion").size() : 0;
}

/// The elements with a child "Signature" of XML Signature, in document order. The library verifies
/// none of these signatures.
inline XMLWrapperElement::List signedElements(const XMLWrapperDoc& document) {
  const auto isSignature = [](const auto& child) {
    return child->tagName() == "Signature" && !child->namespaces().empty() &&
           child->namespaces().at(0)->href() == "http://www.w3.org/2000/09/xmldsig#";
  };
  XMLWrapperElement::List found;
  XMLWrapperElement::List unseen;
  if (document.documentElement()) unseen.push_back(document.documentElement());
  while (!unseen.empty()) {
    const auto element = unseen.back();
    unseen.pop_back();
    const auto& children = element->elements();
    if (std::any_of(children.begin(), children.end(), isSignature)) found.push_back(element);
    unseen.insert(unseen.end(), children.rbegin(), children.rend());
  }
  return found;
}

/// The audiences of all restrictions in the assertion's conditions (SAML 2.0 core, section
/// 2.5.1.4), in one list. The standard requires the client to be in each restriction, which this
/// list cannot show.
inline std::vector<std::string> audiencesOf(const SAMLAssertion& assertion) {
  std::vector<std::string> audiences;
  const auto conditions = assertion.conditions();
  if (!conditions) return audiences;
  for (const auto& restriction : conditions->getElementsByTagName("AudienceRestriction")) {
    for (const auto& audience : restriction->getElementsByTagName("Audience")) {
      audiences.push_back(audience->textContent().value_or(""));
    }
  }
  return audiences;
}

/// The "Recipient" of the first confirmation of the response's subject that has one.
inline std::optional<std::string> recipientOf(const SAMLResponse& response) {
  const auto subject = response.subject();
  if (!subject) return std::nullopt;
  for (const auto& confirmation : subject->subjectConfirmations()) {
    if (auto recipient = confirmation->recipient()) return recipient;
  }
  return std::nullopt;
}

/// The root's "InResponseTo": the identifier of the request.
inline std::optional<std::string> inResponseTo(const SAMLResponse& response) {
  const auto& root = response.documentElement();
  return root ? attributeText(*root, "InResponseTo") : std::nullopt;
}

/// The root's "Destination": where the provider sent the response.
inline std::optional<std::string> destinationOf(const SAMLResponse& response) {
  const auto& root = response.documentElement();
  return root ? attributeText(*root, "Destination") : std::nullopt;
}

/// A date in a form that the library does not read, and therefore treats as missing.
struct UnreadDate {
  std::string element;
  std::string attribute;
  std::string text;
  std::string reason;  ///< such as "it has a fraction of a second"
};

/// Why the library does not read the text as a date, such as "it has a fraction of a second".
[[nodiscard]] inline std::string reasonForUnreadDate(const std::string& text) {
  const std::string_view kForm = "dddd-dd-ddTdd:dd:ddZ";
  const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
  const bool hasForm = std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                                  [isDigit](char character, char form) {
                                    return form == 'd' ? isDigit(character) : character == form;
                                  });
  const std::size_t time = text.find('T');
  if (text.empty()) return "it is empty";
  if (hasForm) return "there is no such day or time";
  if (text.find_first_of(" \t\r\n") != std::string::npos) return "it has white space";
  if (time == std::string::npos) return "it is not of the form 2026-01-15T20:15:02Z";
  if (text.find('.', time) != std::string::npos) return "it has a fraction of a second";
  if (text.find_first_of("+-", time) != std::string::npos) return "it has an offset from UTC";
  if (text.back() != 'Z') return "it names no time zone";
  return "it is not of the form 2026-01-15T20:15:02Z";
}

namespace detail {

inline void noteDate(std::vector<UnreadDate>& unread, const XMLWrapperElement& element,
                     const char* name, const std::optional<SAMLDate>& date) {
  const auto attribute = element.attributeWithName(name);
  if (!attribute || date) return;
  const std::string text = attribute->value().value_or("");
  unread.push_back({element.tagName().value_or(""), name, text, reasonForUnreadDate(text)});
}

inline void noteDates(std::vector<UnreadDate>& unread, const SAMLSubject& subject) {
  for (const auto& confirmation : subject.subjectConfirmations()) {
    const auto data = confirmation->firstElementByTagName("SubjectConfirmationData");
    if (!data) continue;
    noteDate(unread, *data, "NotBefore", confirmation->notBefore());
    noteDate(unread, *data, "NotOnOrAfter", confirmation->notOnOrAfter());
  }
}

inline void noteDates(std::vector<UnreadDate>& unread, const SAMLAssertion& assertion) {
  noteDate(unread, assertion, "IssueInstant", assertion.issueInstant());
  if (const auto subject = assertion.subject()) noteDates(unread, *subject);
  if (const auto conditions = assertion.conditions()) {
    noteDate(unread, *conditions, "NotBefore", conditions->notBefore());
    noteDate(unread, *conditions, "NotOnOrAfter", conditions->notOnOrAfter());
  }
  for (const auto& element : assertion.getElementsByTagName("AuthnStatement")) {
    const auto statement = std::dynamic_pointer_cast<SAMLAuthNStatement>(element);
    if (!statement) continue;
    noteDate(unread, *statement, "AuthnInstant", statement->authnInstant());
    noteDate(unread, *statement, "SessionNotOnOrAfter", statement->sessionNotOnOrAfter());
  }
}

}  // namespace detail

/// The dates of the response and its assertions that the library could not read: it reads only
/// whole seconds in UTC, `2026-01-15T20:15:02Z`. In a time window such a date is no restriction;
/// such a "SessionNotOnOrAfter" makes the authentication invalid.
inline std::vector<UnreadDate> unreadDates(const SAMLResponse& response) {
  std::vector<UnreadDate> unread;
  if (const auto& root = response.responseElement()) {
    detail::noteDate(unread, *root, "IssueInstant", root->issueInstant());
  }
  for (const auto& assertion : assertionsOf(response)) detail::noteDates(unread, *assertion);
  return unread;
}

}  // namespace kestrelink::standard
