// Fills requests in from what was read.
//
//     auto query = newDecisionQuery(controller, {.resource = "https://tv.example/1", .channel =
//     "C"}); if (!setSubjectFrom(*query, *response)) giveUp("the response names nobody");
#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrelink/standard/ElementCopy.h"
#include "kestrelink/standard/Elements.h"
#include "kestrelink/standard/StandardReading.h"

namespace kestrelink::standard {

namespace detail {

/// Puts the child in the place of all children of those names. Stores a new list at the end, so
/// that nothing is changed when out of memory.
inline void replaceChildren(XMLWrapperElement& parent,
                            std::initializer_list<std::string_view> names,
                            const std::shared_ptr<XMLWrapperElement>& child) {
  XMLWrapperElement::List children = parent.elements();
  std::erase_if(children, [names](const auto& old) {
    return std::find(names.begin(), names.end(), old->tagName()) != names.end();
  });
  children.push_back(child);
  parent.setElements(std::move(children));
}

}  // namespace detail

/// Sets the subject of an authentication request or a query to that of the response, and removes
/// any other. The element is then part of both; `toStandardForm` does not change it. False, and
/// nothing changed, when the response has no subject or the document no `requestElement`. Nothing
/// is changed either when out of memory.
template <class Request>
[[nodiscard]] bool setSubjectFrom(const Request& request, const SAMLResponse& response) {
  const auto subject = response.subject();
  const auto& element = request.requestElement();
  if (!subject || !element) return false;
  detail::replaceChildren(*element, {"Subject"}, subject);
  return true;
}

/// Copies the subject's name identifier, with all its attributes, into the logout request and
/// replaces any that is there. The copy is named "NameId", so that it is written with and without
/// `toStandardForm`. False when the subject has none, or the document no root element of its class.
/// When out of memory, the request is not changed.
[[nodiscard]] inline bool setNameIdFrom(const SAMLLogoutRequest& request,
                                        const SAMLSubject& subject) {
  const auto identifier = nameIdOf(subject);
  const auto& element = request.requestElement();
  if (!identifier || !element) return false;
  auto copy = copyOf(*identifier);
  copy->setTagName("NameId");
  detail::replaceChildren(*element, {"NameId", "NameID"}, copy);
  return true;
}

/// The same from the subject of a response; false when it has none.
[[nodiscard]] inline bool setNameIdFrom(const SAMLLogoutRequest& request,
                                        const SAMLResponse& response) {
  const auto subject = response.subject();
  return subject && setNameIdFrom(request, *subject);
}

/// Sets the accepted ways of authentication: URIs of classes (SAML 2.0 core, section 3.3.2.2.1), of
/// which the provider uses one. Without any it is free to choose. Does nothing when the document
/// has no `requestElement`.
inline void setContextClasses(const SAMLAuthNRequest& request,
                              const std::vector<std::string>& classes) {
  const auto& element = request.requestElement();
  if (!element) return;
  for (const auto& old : element->getElementsByTagName("RequestedAuthnContext")) {
    element->removeChildElement(old);
  }
  if (classes.empty()) return;
  const auto context = newElement("RequestedAuthnContext", "samlp", kProtocolNamespace);
  for (const std::string& each : classes) {
    const auto reference = newElement("AuthnContextClassRef", "saml", kAssertionNamespace);
    reference->setTextContent(each);
    context->addChildElement(reference);
  }
  element->addChildElement(context);
}

/// Names the session to end: `authenticationSessionId()` of the response that began it. Does
/// nothing when the document has no `requestElement`.
inline void setSessionIndex(const SAMLLogoutRequest& request, std::string_view index) {
  if (request.requestElement()) request.requestElement()->setSessionIndex(index);
}

/// What a decision query asks.
struct DecisionQuestion {
  std::string_view resource;  ///< the URL of what the subscriber wants to watch
  std::string_view channel;   ///< the identifier of the channel that asks
  std::vector<std::string_view> actions = {SAMLAuthZDecisionQueryActionPlay};
};

/// A decision query with its actions. Never null.
[[nodiscard]] inline std::shared_ptr<SAMLAuthZDecisionQuery> newDecisionQuery(
    const SAMLParserController& controller, const DecisionQuestion& question) {
  auto query = controller.newAuthZQuery(question.resource, question.channel);
  for (const std::string_view action : question.actions) query->addAction(action);
  return query;
}

}  // namespace kestrelink::standard
