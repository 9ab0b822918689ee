// OpenSAML as the strictest reader of requests: it validates against the standard's schemas while
// it parses, then against its own rules. A job is a line of JSON, and so is its result.
#include <saml/SAMLConfig.h>
#include <saml/saml2/core/Protocols.h>
#include <xmltooling/XMLObjectBuilder.h>
#include <xmltooling/XMLToolingConfig.h>
#include <xmltooling/util/ParserPool.h>
#include <xmltooling/validation/ValidatorSuite.h>

#include <iostream>
#include <memory>
#include <sstream>

#include <nlohmann/json.hpp>

namespace {

nlohmann::json result(const std::string& message) try {
  std::istringstream stream(message);
  auto& parser = xmltooling::XMLToolingConfig::getConfig().getValidatingParser();
  auto* const root = parser.parse(stream)->getDocumentElement();
  const std::unique_ptr<xmltooling::XMLObject> object(
      xmltooling::XMLObjectBuilder::buildOneFromElement(root, true));
  xmltooling::SchemaValidators.validate(object.get());
  const auto& request = dynamic_cast<const opensaml::saml2p::RequestAbstractType&>(*object);
  const xmltooling::auto_ptr_char id(request.getID()), issuer(request.getIssuer()->getName());
  return {{"read", {{"id", id.get()}, {"issuer", issuer.get()}}}, {"response", nullptr}};
} catch (const std::exception& refusal) {
  return {{"refused", refusal.what()}};
}

}  // namespace

int main() {
  auto& tooling = xmltooling::XMLToolingConfig::getConfig();
  tooling.log_config("OFF");
  opensaml::SAMLConfig::getConfig().init();
  tooling.getValidatingParser().loadCatalogs(
      "/usr/share/xml/xmltooling/catalog.xml:/usr/share/xml/opensaml/saml20-catalog.xml");
  for (std::string line; std::getline(std::cin, line);) {
    std::cout << result(nlohmann::json::parse(line)["message"]) << std::endl;
  }
  opensaml::SAMLConfig::getConfig().term();
}
