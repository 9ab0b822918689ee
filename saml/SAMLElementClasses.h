#pragma once

namespace kestrelink {

/// Registers the SAML element classes with the element factory.
void registerSAMLElementClasses();

}  // namespace kestrelink
