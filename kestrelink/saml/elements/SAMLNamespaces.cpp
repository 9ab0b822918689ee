#include "kestrelink/saml/elements/SAMLNamespaces.h"

#include <string>

namespace kestrelink {
namespace {

std::shared_ptr<XMLWrapperNamespace> makeNamespace(std::string_view prefix, std::string_view href) {
  return std::make_shared<XMLWrapperNamespace>(std::string(prefix), std::string(href));
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

}  // namespace kestrelink
