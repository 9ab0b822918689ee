// The namespaces of SAML messages.
#pragma once

#include <memory>
#include <string_view>

#include "kestrelink/xml/NamespaceMap.h"
#include "kestrelink/xml/XMLWrapperNamespace.h"

namespace kestrelink {

inline constexpr std::string_view kSAMLProtocolNSPrefix = "samlp";
inline constexpr std::string_view kSAMLProtocolNSHref = "urn:oasis:names:tc:SAML:2.0:protocol";
inline constexpr std::string_view kSAMLAssertionNSPrefix = "saml";
inline constexpr std::string_view kSAMLAssertionNSHref = "urn:oasis:names:tc:SAML:2.0:assertion";
inline constexpr std::string_view kDSSignatureNSPrefix = "ds";
inline constexpr std::string_view kDSSignatureNSHref = "http://www.w3.org/2000/09/xmldsig#";
inline constexpr std::string_view kSAMLMetadataNSPrefix = "md";
inline constexpr std::string_view kSAMLMetadataNSHref = "urn:oasis:names:tc:SAML:2.0:metadata";

/// A new namespace object on every call.
std::shared_ptr<XMLWrapperNamespace> SAMLProtocolNamespace();
std::shared_ptr<XMLWrapperNamespace> SAMLAssertionNamespace();
std::shared_ptr<XMLWrapperNamespace> SAMLSignatureNamespace();

/// A map of that one namespace, for elements made in memory to share: an element copies its map
/// before it changes it.
const NamespaceMap& protocolNamespaceOnly();
const NamespaceMap& assertionNamespaceOnly();
const NamespaceMap& signatureNamespaceOnly();

}  // namespace kestrelink
