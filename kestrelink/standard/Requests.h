// Fills requests in from what was read.
//
//     auto query = newDecisionQuery(controller, {.resource = "https://tv.example/1", .channel =
//     "C"}); if (!setSubjectFrom(*query, *response)) giveUp("the response names nobody");
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "kestrelink/standard/ElementCopy.h"
#include "kestrelink/standard/StandardReading.h"

namespace kestrelink::standard {

/// Sets the subject of an authentication request or a query to that of the response, and removes
/// any other. The element is then part of both; `toStandardForm` does not change it. False, and
/// nothing changed, when the response has no subject or the document no `requestElement`.
template <class Request>
[[nodiscard]] bool setSubjectFrom(const Request& request, const SAMLResponse& response) {
  const auto subject = response.subject();
  const auto& element = request.requestElement();
  if (!subject || !element) return false;
  for (const auto& old : element->getElementsByTagName("Subject")) element->removeChildElement(old);
  element->setSubject(subject);
  return true;
}

/// Copies the subject's name identifier, with all its attributes, into the logout request and
/// replaces any that is there. The copy is named "NameId", so that it is written with and without
/// `toStandardForm`. False when the subject has none, or the document no root element of its class.
[[nodiscard]] inline bool setNameIdFrom(const SAMLLogoutRequest& request,
                                        const SAMLSubject& subject) {
  const auto identifier = nameIdOf(subject);
  const auto& element = request.requestElement();
  if (!identifier || !element) return false;
  auto copy = copyOf(*identifier);
  copy->setTagName("NameId");
  for (const char* name : {"NameId", "NameID"}) {
    for (const auto& old : element->getElementsByTagName(name)) element->removeChildElement(old);
  }
  element->addChildElement(copy);
  return true;
}

/// The same from the subject of a response; false when it has none.
[[nodiscard]] inline bool setNameIdFrom(const SAMLLogoutRequest& request,
                                        const SAMLResponse& response) {
  const auto subject = response.subject();
  return subject && setNameIdFrom(request, *subject);
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
