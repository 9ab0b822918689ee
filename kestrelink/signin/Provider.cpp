#include "kestrelink/signin/Provider.h"

#include <algorithm>
#include <utility>

#include "kestrelink/signin/Certificates.h"
#include "kestrelink/signin/Dates.h"
#include "kestrelink/signin/Metadata.h"
#include "kestrelink/signin/Outgoing.h"

namespace kestrelink::signin {
namespace {

struct Service {
  const char* role;
  const char* name;
  std::vector<Endpoint> Provider::*endpoints;
  std::vector<Binding> bindings;
};

std::vector<Service> services() {
  const std::vector<Binding> browser = {Binding::redirect, Binding::post};
  return {
      {"IDPSSODescriptor", "SingleSignOnService", &Provider::signOn, browser},
      {"IDPSSODescriptor",
       "SingleLogoutService",
       &Provider::logout,
       {Binding::redirect, Binding::post, Binding::soap}},
      {"AttributeAuthorityDescriptor", "AttributeService", &Provider::attributes, {Binding::soap}},
      {"PDPDescriptor", "AuthzService", &Provider::decisions, {Binding::soap}},
  };
}

std::vector<xmlNode*> rolesOf(const xmlNode* descriptor, const char* name) {
  std::vector<xmlNode*> roles = children(descriptor, kMetadata, name);
  std::erase_if(roles, [](const xmlNode* role) {
    const std::string protocols = " " + attribute(role, "protocolSupportEnumeration") + " ";
    return protocols.find(" " + std::string(kProtocol) + " ") == std::string::npos;
  });
  return roles;
}

void takeEndpoints(const xmlNode* role, const Service& service, Provider& provider) {
  for (const xmlNode* element : children(role, kMetadata, service.name)) {
    const std::string uri = attribute(element, "Binding");
    const auto binding = std::find_if(service.bindings.begin(), service.bindings.end(),
                                      [&uri](Binding each) { return uri == uriOf(each); });
    const std::string url = attribute(element, "Location");
    const bool isUsable = binding != service.bindings.end() && isWebUrl(url);
    if (isUsable) (provider.*service.endpoints).push_back({*binding, url});
  }
}

void takeCertificate(const xmlNode* element, std::vector<std::string>& certificates) {
  auto pem = pemOf(contentOf(element));
  if (!pem || std::find(certificates.begin(), certificates.end(), *pem) != certificates.end()) {
    return;
  }
  certificates.push_back(std::move(*pem));
}

void takeCertificates(const xmlNode* role, std::vector<std::string>& certificates) {
  for (const xmlNode* key : children(role, kMetadata, "KeyDescriptor")) {
    if (hasAttribute(key, "use") && attribute(key, "use") != "signing") continue;
    for (const xmlNode* info : children(key, kSignature, "KeyInfo")) {
      for (const xmlNode* data : children(info, kSignature, "X509Data")) {
        for (const xmlNode* text : children(data, kSignature, "X509Certificate")) {
          takeCertificate(text, certificates);
        }
      }
    }
  }
}

void limit(const xmlNode* element, std::optional<SAMLDate>& validUntil) {
  if (!hasAttribute(element, "validUntil")) return;
  const std::string text = attribute(element, "validUntil");
  const auto date = dateFromText(text, Rounding::down);
  if (!date) refuse(Reason::malformedDate, "validUntil " + quoted(text) + " is no date");
  validUntil = validUntil ? std::min(*validUntil, *date) : *date;
}

bool wantsSignedRequests(const xmlNode* role) {
  const std::string wants = attribute(role, "WantAuthnRequestsSigned");
  return wants == "true" || wants == "1";
}

Provider providerOf(const xmlNode* descriptor) {
  Provider provider{.entityId = attribute(descriptor, "entityID")};
  for (const xmlNode* at = descriptor; at->type == XML_ELEMENT_NODE; at = at->parent) {
    limit(at, provider.validUntil);
  }
  require(!rolesOf(descriptor, "IDPSSODescriptor").empty(), Reason::notConfigured,
          "the entity is no identity provider for SAML 2.0");
  for (const Service& service : services()) {
    for (const xmlNode* role : rolesOf(descriptor, service.role)) {
      limit(role, provider.validUntil);
      provider.wantsSignedRequests |= wantsSignedRequests(role);
      takeEndpoints(role, service, provider);
      takeCertificates(role, provider.signingCertificates);
    }
  }
  return provider;
}

}  // namespace

std::optional<Provider> providerFromMetadata(std::string_view metadata, std::string_view entityId,
                                             std::string& reason, std::string_view certificate,
                                             const Policy& policy) {
  try {
    const std::vector<std::string> certificates = {std::string(certificate)};
    const Signer signer{certificates, policy.acceptSha1, policy.leastRsaBits};
    const Provider provider = quietly([&] {
      const Entity entity = entityIn(metadata, entityId, certificate.empty() ? nullptr : &signer);
      return providerOf(entity.descriptor);
    });
    if (!provider.validUntil || *provider.validUntil > policy.clock()) return provider;
    refuse(Reason::providerExpired, "the metadata expired at " + textOf(*provider.validUntil));
  } catch (const Refusal& refusal) {
    reason = refusal.what();
    return std::nullopt;
  }
}

}  // namespace kestrelink::signin
