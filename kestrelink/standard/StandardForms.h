// Requests in the form that the SAML 2.0 protocol schema accepts.
//
// The library writes requests in a form that its providers match ("NameIdPolicy", "Action" without
// a namespace, a logout request without a name identifier). A provider that validates requests
// refuses it. `toStandardForm` changes a complete request into one that the schema accepts:
//
//     auto request = controller.newAuthNRequest("https://tv.example");
//     setDestination(*request, "https://idp.example/sso");
//     setAssertionConsumerService(*request, "https://tv.example/acs");
//     if (const auto made = toStandardForm(*request); made != StandardForm::made)
//       giveUp(reasonOf(made));
//     send(*request->xmlString());
//
// Header-only. It uses only exported classes, so it works with the shared and the static library.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrelink/standard/ElementCopy.h"
#include "kestrelink/standard/Elements.h"
#include "kestrelink/standard/MakeElement.h"
#include "kestrelink/standard/Requests.h"  // IWYU pragma: export
#include "kestrelink/standard/StandardReading.h"
#include "kestrelink/standard/XPath.h"  // IWYU pragma: export

namespace kestrelink::standard {

/// The result of `toStandardForm`. With any result except `made` the request was not changed.
enum class StandardForm {
  made,                       ///< the request now has its standard form
  noRequest,                  ///< the document has no `requestElement`
  badIdentifier,              ///< "ID" is missing, or is no XML name even with "_" before it
  noSubject,                  ///< a query has no subject
  severalSubjects,            ///< the schema allows one
  noNameIdentifier,           ///< a logout request, or a subject without confirmation, has none
  severalNameIdentifiers,     ///< the schema allows one
  confirmationWithoutMethod,  ///< a "SubjectConfirmation" of the subject has no "Method"
  noAction,                   ///< a decision query has no action
  noResource,                 ///< a decision query has no resource, or an empty one
};

/// A description of the result, in English.
constexpr const char* reasonOf(StandardForm form) {
  switch (form) {
    case StandardForm::made:
      return "the request has its standard form";
    case StandardForm::noRequest:
      return "the document holds no request";
    case StandardForm::badIdentifier:
      return "the request has no ID that is an XML name";
    case StandardForm::noSubject:
      return "the query has no subject";
    case StandardForm::severalSubjects:
      return "the request has several subjects";
    case StandardForm::noNameIdentifier:
      return "the request has no name identifier";
    case StandardForm::severalNameIdentifiers:
      return "the request has several name identifiers";
    case StandardForm::confirmationWithoutMethod:
      return "the subject has a confirmation without a method";
    case StandardForm::noAction:
      return "the query has no action";
    case StandardForm::noResource:
      return "the query has no resource";
  }
  return "";
}

/// The namespace of an action that names none (SAML 2.0 core, sections 2.7.4.2 and 8.1.2).
inline constexpr std::string_view kDefaultActionNamespace =
    "urn:oasis:names:tc:SAML:1.0:action:rwedc-negation";

inline constexpr std::string_view kHttpPostBinding =
    "urn:oasis:names:tc:SAML:2.0:bindings:HTTP-POST";

/// Sets the attribute "Destination" of any request: where it is sent (SAML 2.0 core, section
/// 3.2.1). Does nothing when the document has no root element.
inline void setDestination(const XMLWrapperDoc& request, std::string_view url) {
  if (request.documentElement()) {
    request.documentElement()->setAttributeWithName("Destination", url);
  }
}

/// Sets where the response is to be sent and by which binding (SAML 2.0 core, section 3.4.1). When
/// out of memory, neither is changed.
inline void setAssertionConsumerService(const SAMLAuthNRequest& request, std::string_view url,
                                        std::string_view binding = kHttpPostBinding) {
  if (!request.requestElement()) return;
  XMLWrapperElement& element = *request.requestElement();
  constexpr std::string_view kUrl = "AssertionConsumerServiceURL";
  const auto earlier = element.attributeWithName(kUrl);
  std::optional<XMLWrapperAttribute> kept;
  if (earlier) kept = *earlier;
  element.setAttributeWithName(kUrl, url);
  try {
    element.setAttributeWithName("ProtocolBinding", binding);
  } catch (...) {
    if (kept) *element.attributeWithName(kUrl) = *std::move(kept);
    if (!earlier) element.removeAttributeWithName(kUrl);
    throw;
  }
}

namespace detail {

inline constexpr std::array<std::string_view, 3> kNameIdentifiers = {"BaseID", "NameID",
                                                                     "EncryptedID"};

/// Removes the children of that name but this one.
inline void keepOnly(XMLWrapperElement& parent, std::string_view tagName,
                     const std::shared_ptr<XMLWrapperElement>& kept) {
  XMLWrapperElement::List children = parent.elements();
  std::erase_if(children,
                [&](const auto& child) { return child != kept && child->tagName() == tagName; });
  if (children.size() < parent.elements().size()) parent.setElements(std::move(children));
}

inline void keepLast(XMLWrapperElement& parent, std::string_view tagName) {
  const XMLWrapperElement::List all = parent.getElementsByTagName(tagName);
  if (!all.empty()) keepOnly(parent, tagName, all.back());
}

inline void putChildrenInNamespace(XMLWrapperElement& parent, std::string_view tagName,
                                   const char* prefix, const char* href) {
  for (const auto& child : parent.getElementsByTagName(tagName)) {
    putInNamespace(*child, prefix, href);
  }
}

/// Gives name identifiers their standard name and namespace; returns their number.
inline std::size_t mendNameIdentifiers(XMLWrapperElement& parent) {
  for (const auto& identifier : parent.getElementsByTagName("NameId")) {
    identifier->setTagName("NameID");
  }
  std::size_t count = 0;
  for (const std::string_view name : kNameIdentifiers) {
    putChildrenInNamespace(parent, name, "saml", kAssertionNamespace);
    count += parent.getElementsByTagName(name).size();
  }
  return count;
}

inline StandardForm mendConfirmation(XMLWrapperElement& confirmation) {
  if (!attributeText(confirmation, "Method")) return StandardForm::confirmationWithoutMethod;
  if (mendNameIdentifiers(confirmation) > 1) return StandardForm::severalNameIdentifiers;
  putInNamespace(confirmation, "saml", kAssertionNamespace);
  // Keep the first, which the library reads.
  keepOnly(confirmation, "SubjectConfirmationData",
           confirmation.firstElementByTagName("SubjectConfirmationData"));
  putChildrenInNamespace(confirmation, "SubjectConfirmationData", "saml", kAssertionNamespace);
  confirmation.setChildElementSequence(
      {{"BaseID", "NameID", "EncryptedID", "SubjectConfirmationData"}});
  return StandardForm::made;
}

inline StandardForm mendSubject(XMLWrapperElement& request, bool isRequired) {
  const auto subjects = request.getElementsByTagName("Subject");
  if (subjects.size() > 1) return StandardForm::severalSubjects;
  if (subjects.empty()) return isRequired ? StandardForm::noSubject : StandardForm::made;

  XMLWrapperElement& subject = *subjects.front();
  const auto confirmations = subject.getElementsByTagName("SubjectConfirmation");
  const std::size_t identifiers = mendNameIdentifiers(subject);
  if (identifiers > 1) return StandardForm::severalNameIdentifiers;
  if (identifiers == 0 && confirmations.empty()) return StandardForm::noNameIdentifier;
  for (const auto& confirmation : confirmations) {
    const StandardForm mended = mendConfirmation(*confirmation);
    if (mended != StandardForm::made) return mended;
  }
  putInNamespace(subject, "saml", kAssertionNamespace);
  subject.setChildElementSequence({{"BaseID", "NameID", "EncryptedID", "SubjectConfirmation"}});
  return StandardForm::made;
}

inline void mendScoping(XMLWrapperElement& scoping) {
  putInNamespace(scoping, "samlp", kProtocolNamespace);
  putChildrenInNamespace(scoping, "RequesterID", "samlp", kProtocolNamespace);
  scoping.setChildElementSequence({{"IDPList", "RequesterID"}});
}

inline StandardForm mendIdentifier(XMLWrapperElement& request) {
  const std::string identifier = attributeText(request, "ID").value_or("");
  if (isXmlName(identifier)) return StandardForm::made;
  if (identifier.empty() || !isXmlName("_" + identifier)) return StandardForm::badIdentifier;
  request.setAttributeWithName("ID", "_" + identifier);
  return StandardForm::made;
}

/// Copies the request into a new root element. Attributes without a value are left out: they would
/// be written as empty. "ProviderID" becomes "ProviderName".
inline void copyRequest(XMLWrapperElement& copy, const XMLWrapperElement& request) {
  copy.setQuery(nullptr);
  if (!request.namespaces().empty()) copy.setNamespace(request.namespaces().at(0));
  for (const auto& [key, attribute] : request.attributes()) {
    if (attribute->value() && key != "ProviderID") copyAttribute(copy, key, *attribute);
  }
  if (const auto name = attributeText(request, "ProviderID")) {
    copy.setAttributeWithName("ProviderName", *name);
  }
  XMLWrapperElement::List children;
  for (const auto& child : request.elements()) children.push_back(copyOf(*child));
  copy.setElements(std::move(children));
  putInNamespace(copy, "samlp", kProtocolNamespace);
}

/// Works on a copy and stores it in the document at the end, so that nothing is changed on failure
/// or when out of memory. `order` lists the children that are specific to this request.
template <class Request, class Mend>
StandardForm toStandardForm(Request& request, std::string_view tagName,
                            const std::vector<std::string>& order, Mend mend) {
  if (!request.requestElement()) return StandardForm::noRequest;
  const auto blank = Request::initWithData(
      std::make_shared<const std::string>("<" + std::string(tagName) + "/>"), nullptr);
  const auto copy = blank->requestElement();
  copyRequest(*copy, *request.requestElement());

  StandardForm mended = mendIdentifier(*copy);
  if (mended == StandardForm::made) mended = mend(*copy);
  if (mended != StandardForm::made) return mended;

  std::vector<std::string> sequence = {"Issuer", "Signature", "Extensions"};
  sequence.insert(sequence.end(), order.begin(), order.end());
  copy->setChildElementSequence(std::move(sequence));
  request.setDocumentElement(copy);
  request.setRequestElement(copy);
  return StandardForm::made;
}

}  // namespace detail

/// Gives a request its standard form. All four overloads
///
/// - store a new element tree in the document. An element that a client got from the request
///   before, `requestElement()` included, is no longer part of it: setting something there changes
///   nothing that is sent. Get it again. A subject shared with a response is not changed;
/// - leave out children that are not allowed in such a request, as `xmlString` does;
/// - put "_" before an "ID" whose first character cannot start an XML name, such as a UUID;
/// - write subjects completely: "NameId" becomes "NameID", confirmations keep all that the schema
///   allows, and the namespaces of attributes are declared;
/// - may be called again, also after further setters; a request in its standard form is not
///   changed.
///
/// Afterwards look-ups by the library's own names find nothing: `nameIdPolicy()`, `nameId()`,
/// `subjectConfirmations()`, `evidence()`. Use `firstElementByTagName("NameIDPolicy")` and so on.
///
/// This overload: "NameIdPolicy" becomes "NameIDPolicy", "ProviderID" becomes "ProviderName". Of
/// several policies, conditions, requested contexts and scopings the last is kept.
[[nodiscard]] inline StandardForm toStandardForm(SAMLAuthNRequest& request) {
  const auto mend = [](XMLWrapperElement& root) {
    for (const auto& policy : root.getElementsByTagName("NameIdPolicy")) {
      policy->setTagName("NameIDPolicy");
    }
    for (const char* name : {"NameIDPolicy", "Conditions", "RequestedAuthnContext", "Scoping"}) {
      detail::keepLast(root, name);
    }
    detail::putChildrenInNamespace(root, "NameIDPolicy", "samlp", kProtocolNamespace);
    if (const auto scoping = root.firstElementByTagName("Scoping")) detail::mendScoping(*scoping);
    return detail::mendSubject(root, false);
  };
  return detail::toStandardForm(
      request, "AuthnRequest",
      {"Subject", "NameIDPolicy", "Conditions", "RequestedAuthnContext", "Scoping"}, mend);
}

/// As above. The query must have a subject.
[[nodiscard]] inline StandardForm toStandardForm(SAMLAttributeQuery& query) {
  return detail::toStandardForm(
      query, "AttributeQuery", {"Subject", "Attribute"},
      [](XMLWrapperElement& root) { return detail::mendSubject(root, true); });
}

/// As above. The query must have a subject, an action and a resource. Its actions get the assertion
/// namespace and, where it is missing, the attribute "Namespace" with `actionNamespace`; the
/// provider documents which one it expects for actions such as "Play". The library's evidence
/// ("Element") is left out; an "Evidence" that the client added is kept.
[[nodiscard]] inline StandardForm toStandardForm(
    SAMLAuthZDecisionQuery& query, std::string_view actionNamespace = kDefaultActionNamespace) {
  const auto mend = [actionNamespace](XMLWrapperElement& root) {
    const auto actions = root.getElementsByTagName("Action");
    if (attributeText(root, "Resource").value_or("").empty()) return StandardForm::noResource;
    if (actions.empty()) return StandardForm::noAction;
    for (const auto& action : actions) {
      putInNamespace(*action, "saml", kAssertionNamespace);
      if (!attributeText(*action, "Namespace")) {
        action->setAttributeWithName("Namespace", actionNamespace);
      }
    }
    detail::keepLast(root, "Evidence");
    return detail::mendSubject(root, true);
  };
  return detail::toStandardForm(query, "AuthzDecisionQuery", {"Subject", "Action", "Evidence"},
                                mend);
}

/// As above. The request must have a name identifier: see `setNameIdFrom` and `newNameId`.
[[nodiscard]] inline StandardForm toStandardForm(SAMLLogoutRequest& request) {
  const auto mend = [](XMLWrapperElement& root) {
    const std::size_t identifiers = detail::mendNameIdentifiers(root);
    if (identifiers == 0) return StandardForm::noNameIdentifier;
    if (identifiers > 1) return StandardForm::severalNameIdentifiers;
    detail::putChildrenInNamespace(root, "SessionIndex", "samlp", kProtocolNamespace);
    return StandardForm::made;
  };
  return detail::toStandardForm(request, "LogoutRequest",
                                {"BaseID", "NameID", "EncryptedID", "SessionIndex"}, mend);
}

}  // namespace kestrelink::standard
