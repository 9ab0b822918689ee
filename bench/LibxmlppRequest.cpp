#include <libxml++/libxml++.h>

#include "bench/Peers.h"
#include "bench/Raw.h"

namespace bench {

std::string libxmlppRequest(const std::string& issuer) {
  xmlpp::Document doc;
  xmlpp::Element* const root =
      doc.create_root_node("AuthnRequest", "urn:oasis:names:tc:SAML:2.0:protocol", "samlp");
  const Stamp stamp = newStamp();
  root->set_attribute("ID", stamp.identifier);
  root->set_attribute("Version", "2.0");
  root->set_attribute("IssueInstant", stamp.instant);

  xmlpp::Element* const issuerElement = root->add_child("Issuer");
  issuerElement->set_namespace_declaration("urn:oasis:names:tc:SAML:2.0:assertion", "saml");
  issuerElement->set_namespace("saml");
  issuerElement->set_child_text(issuer);
  xmlpp::Element* const policy = root->add_child("NameIdPolicy", "samlp");
  policy->set_attribute("Format", "urn:oasis:names:tc:SAML:2.0:nameid-format:transient");
  policy->set_attribute("AllowCreate", "false");
  return doc.write_to_string_formatted();
}

}  // namespace bench
