#include "kestrelink/signin/Certificates.h"
#include "kestrelink/signin/Client.h"
#include "kestrelink/signin/Metadata.h"

namespace kestrelink::signin {
namespace {

// The algorithms that are decrypted, the best first.
constexpr const char* kEncryptionMethods[] = {"http://www.w3.org/2009/xmlenc11#aes256-gcm",
                                              "http://www.w3.org/2009/xmlenc11#aes192-gcm",
                                              "http://www.w3.org/2009/xmlenc11#aes128-gcm",
                                              "http://www.w3.org/2001/04/xmlenc#aes256-cbc",
                                              "http://www.w3.org/2001/04/xmlenc#aes192-cbc",
                                              "http://www.w3.org/2001/04/xmlenc#aes128-cbc",
                                              "http://www.w3.org/2009/xmlenc11#rsa-oaep",
                                              "http://www.w3.org/2001/04/xmlenc#rsa-oaep-mgf1p"};

constexpr const char* kNameIdFormats[] = {"urn:oasis:names:tc:SAML:2.0:nameid-format:persistent",
                                          "urn:oasis:names:tc:SAML:2.0:nameid-format:transient"};

void set(xmlNode* element, const char* name, const std::string& value) {
  made(xmlNewProp(element, xmlText(name), xmlText(value)));
}

// In the namespace of the parent; the text is escaped.
xmlNode* add(xmlNode* parent, const char* name, const std::string& text = {}) {
  return made(
      xmlNewTextChild(parent, nullptr, xmlText(name), text.empty() ? nullptr : xmlText(text)));
}

void addKey(xmlNode* role, const char* use, const std::string& certificatePem) {
  const auto certificate = base64OfCertificate(certificatePem);
  if (!certificate) return;
  xmlNode* const key = add(role, "KeyDescriptor");
  set(key, "use", use);
  xmlNode* const info = add(key, "KeyInfo");
  xmlSetNs(info, made(xmlNewNs(info, xmlText(kSignature), xmlText("ds"))));
  add(add(info, "X509Data"), "X509Certificate", *certificate);
  if (std::string_view(use) == "signing") return;
  for (const char* method : kEncryptionMethods)
    set(add(key, "EncryptionMethod"), "Algorithm", method);
}

xmlNode* addEndpoint(xmlNode* role, const char* name, Binding binding, const std::string& url) {
  xmlNode* const endpoint = add(role, name);
  set(endpoint, "Binding", uriOf(binding));
  set(endpoint, "Location", url);
  return endpoint;
}

void addRole(xmlNode* entity, const Client& client, const Policy& policy) {
  xmlNode* const role = add(entity, "SPSSODescriptor");
  set(role, "AuthnRequestsSigned", policy.signRequests ? "true" : "false");
  set(role, "WantAssertionsSigned", "true");
  set(role, "protocolSupportEnumeration", kProtocol);
  addKey(role, "signing", client.signingCertificate);
  addKey(role, "encryption", client.encryptionCertificate);
  if (!client.logoutService.empty()) {
    for (const Binding each : {Binding::redirect, Binding::post}) {
      addEndpoint(role, "SingleLogoutService", each, client.logoutService);
    }
  }
  for (const char* format : kNameIdFormats) add(role, "NameIDFormat", format);
  set(addEndpoint(role, "AssertionConsumerService", Binding::post, client.assertionConsumer),
      "index", "0");
}

void addEntity(xmlDoc* document, const Client& client, const Policy& policy) {
  xmlNode* const entity =
      made(xmlNewDocNode(document, nullptr, xmlText("EntityDescriptor"), nullptr));
  xmlDocSetRootElement(document, entity);
  xmlSetNs(entity, made(xmlNewNs(entity, xmlText(kMetadata), nullptr)));
  set(entity, "entityID", client.entityId);
  addRole(entity, client, policy);
}

}  // namespace

std::string metadataOf(const Client& client, const Policy& policy) {
  try {
    return quietly([&] {
      const Owned<xmlDoc> document(made(xmlNewDoc(xmlText("1.0"))));
      addEntity(document.get(), client, policy);
      std::string text = written(document.get());
      reparsed(text);  // libxml2 writes whatever it is given
      return text;
    });
  } catch (const Refusal&) {
    return {};
  }
}

}  // namespace kestrelink::signin
