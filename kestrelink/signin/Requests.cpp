#include "kestrelink/signin/Requests.h"

#include <memory>
#include <optional>
#include <utility>

#include "kestrelink/saml/KestrelinkSAML.h"
#include "kestrelink/signin/Refusal.h"
#include "kestrelink/standard/StandardForms.h"

namespace kestrelink::signin {
namespace {

const SAMLParserController& controller() { return SAMLParserController::sharedInstance(); }

void requireMade(standard::StandardForm form) {
  if (form == standard::StandardForm::made) return;
  refuse(Reason::notConfigured, standard::reasonOf(form));
}

template <class Document>
Request written(const Document& document) {
  const auto xml = document.xmlString();
  require(xml.has_value(), Reason::notConfigured, "the request could not be written");
  return {standard::attributeText(*document.requestElement(), "ID").value_or(""), *xml};
}

void setNameIdPolicy(const SAMLAuthNRequest& request, const Wishes& wishes) {
  const auto policy = request.requestElement()->nameIdPolicy();
  if (!wishes.nameIdFormat.empty()) policy->setAttributeWithName("Format", wishes.nameIdFormat);
  policy->setAttributeWithName("AllowCreate", wishes.allowCreate ? "true" : "false");
}

// Whether that could be taken from the session's response.
void requireTaken(bool taken) {
  require(taken, Reason::notConfigured, "the session names no subscriber");
}

const SAMLResponse& responseOf(const Session& session) {
  require(session.response != nullptr, Reason::notConfigured, "the session has no response");
  return *session.response;
}

}  // namespace

Request signInRequest(const Client& client, const std::string& destination, const Wishes& wishes) {
  const auto request = controller().newAuthNRequest(client.entityId);
  standard::setDestination(*request, destination);
  standard::setAssertionConsumerService(*request, client.assertionConsumer);
  if (!client.name.empty()) request->setProviderName(client.name);
  if (wishes.passive) request->setIsPassive(true);
  if (wishes.forced) request->setForceAuthN(true);
  setNameIdPolicy(*request, wishes);
  standard::setContextClasses(*request, wishes.contextClasses);
  requireMade(standard::toStandardForm(*request));
  return written(*request);
}

Request logoutRequest(const Client& client, const std::string& destination,
                      const Session& session) {
  const auto request = controller().newLogoutRequest();
  request->setIssuer(client.entityId);
  standard::setDestination(*request, destination);
  if (session.sessionIndex) standard::setSessionIndex(*request, *session.sessionIndex);
  requireTaken(standard::setNameIdFrom(*request, responseOf(session)));
  requireMade(standard::toStandardForm(*request));
  return written(*request);
}

Request attributeQuery(const std::string& issuer, const std::string& destination,
                       const Session& session, const std::vector<std::string>& names) {
  const auto query = controller().newAttributeQuery(issuer);
  standard::setDestination(*query, destination);
  for (const std::string& name : names) query->addAttribute(name);
  requireTaken(standard::setSubjectFrom(*query, responseOf(session)));
  requireMade(standard::toStandardForm(*query));
  return written(*query);
}

Request decisionQuery(const std::string& issuer, const std::string& destination,
                      const Session& session, const SignIn::Question& question) {
  const auto query = controller().newAuthZQuery(question.resource, issuer);
  standard::setDestination(*query, destination);
  query->addAction(question.action);
  requireTaken(standard::setSubjectFrom(*query, responseOf(session)));
  requireMade(question.actionNamespace.empty()
                  ? standard::toStandardForm(*query)
                  : standard::toStandardForm(*query, question.actionNamespace));
  return written(*query);
}

}  // namespace kestrelink::signin
