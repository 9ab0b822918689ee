#include "kestrelink/saml/elements/SAMLNamespaces.h"

#include <string>
#include <utility>

#include "kestrelink/platform/NoDestructor.h"

namespace kestrelink {
namespace {

std::shared_ptr<XMLWrapperNamespace> makeNamespace(std::string_view prefix, std::string_view href) {
  return std::make_shared<XMLWrapperNamespace>(std::string(prefix), std::string(href));
}

NamespaceMap& mapOf(std::shared_ptr<XMLWrapperNamespace> (*makeOnly)()) {
  NamespaceMap map;
  map.set(makeOnly());
  return noDestructor<NamespaceMap>(std::move(map));
}

}  // namespace

std::shared_ptr<XMLWrapperNamespace> SAMLProtocolNamespace() {
  return makeNamespace(kSAMLProtocolNSPrefix, kSAMLProtocolNSHref);
}

std::shared_ptr<XMLWrapperNamespace> SAMLAssertionNamespace() {
  return makeNamespace(kSAMLAssertionNSPrefix, kSAMLAssertionNSHref);
}

std::shared_ptr<XMLWrapperNamespace> SAMLSignatureNamespace() {
  return makeNamespace(kDSSignatureNSPrefix, kDSSignatureNSHref);
}

const NamespaceMap& protocolNamespaceOnly() {
  static const NamespaceMap& map = mapOf(SAMLProtocolNamespace);
  return map;
}

const NamespaceMap& assertionNamespaceOnly() {
  static const NamespaceMap& map = mapOf(SAMLAssertionNamespace);
  return map;
}

const NamespaceMap& signatureNamespaceOnly() {
  static const NamespaceMap& map = mapOf(SAMLSignatureNamespace);
  return map;
}

}  // namespace kestrelink
