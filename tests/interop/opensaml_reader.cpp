// OpenSAML as the strictest reader of requests: it validates against the standard's schemas while it
// parses, then against its own rules. A job is a line of JSON, and so is its result.
#include <saml/SAMLConfig.h>
#include <saml/saml2/core/Assertions.h>
#include <saml/saml2/core/Protocols.h>
#include <xmltooling/util/ParserPool.h>
#include <xmltooling/validation/ValidatorSuite.h>

#include <iostream>
#include <memory>
#include <sstream>

#include <nlohmann/json.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xmltooling/XMLObjectBuilder.h>
#include <xmltooling/XMLToolingConfig.h>

namespace {

using nlohmann::json;
using namespace opensaml::saml2;
using namespace opensaml::saml2p;

json text(const XMLCh* value) {
  if (value == nullptr) return nullptr;
  const xmltooling::auto_ptr_char local(value);
  return local.get();
}

json subjectOf(const Subject* subject) {
  return subject != nullptr && subject->getNameID() != nullptr
             ? text(subject->getNameID()->getName())
             : json();
}

template <class Elements, class Text>
json texts(const Elements& elements, Text textOf) {
  json all = json::array();
  for (const auto* each : elements) all.push_back(text(textOf(*each)));
  return all;
}

json read(const RequestAbstractType& request) {
  json found = {{"id", text(request.getID())}, {"issuer", text(request.getIssuer()->getName())}};
  if (const auto* authn = dynamic_cast<const AuthnRequest*>(&request)) {
    found["passive"] = authn->IsPassive();
    found["force"] = authn->ForceAuthn();
    found["acs"] = text(authn->getAssertionConsumerServiceURL());
    found["policy"] = text(authn->getNameIDPolicy()->getFormat());
  } else if (const auto* attributes = dynamic_cast<const AttributeQuery*>(&request)) {
    found["subject"] = subjectOf(attributes->getSubject());
    found["attributes"] =
        texts(attributes->getAttributes(), [](const auto& each) { return each.getName(); });
  } else if (const auto* decision = dynamic_cast<const AuthzDecisionQuery*>(&request)) {
    found["subject"] = subjectOf(decision->getSubject());
    found["resource"] = text(decision->getResource());
    found["actions"] =
        texts(decision->getActions(), [](const auto& each) { return each.getAction(); });
  } else if (const auto* logout = dynamic_cast<const LogoutRequest*>(&request)) {
    found["subject"] = text(logout->getNameID()->getName());
    found["session"] = texts(logout->getSessionIndexs(),
                             [](const auto& each) { return each.getSessionIndex(); });
  }
  return found;
}

json result(const std::string& message) try {
  std::istringstream stream(message);
  xercesc::DOMDocument* const document =
      xmltooling::XMLToolingConfig::getConfig().getValidatingParser().parse(stream);
  const std::unique_ptr<xmltooling::XMLObject> object(
      xmltooling::XMLObjectBuilder::buildOneFromElement(document->getDocumentElement(), true));
  xmltooling::SchemaValidators.validate(object.get());
  const auto& request = dynamic_cast<const RequestAbstractType&>(*object);
  return {{"read", read(request)}, {"response", nullptr}};
} catch (const std::exception& refusal) {
  return {{"refused", refusal.what()}};
}

}  // namespace

int main() {
  xmltooling::XMLToolingConfig::getConfig().log_config("OFF");
  opensaml::SAMLConfig::getConfig().init();
  xmltooling::XMLToolingConfig::getConfig().getValidatingParser().loadCatalogs(
      "/usr/share/xml/xmltooling/catalog.xml:/usr/share/xml/opensaml/saml20-catalog.xml");
  for (std::string line; std::getline(std::cin, line);) {
    std::cout << result(json::parse(line)["message"]).dump() << std::endl;
  }
  opensaml::SAMLConfig::getConfig().term();
}
