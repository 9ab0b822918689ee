#pragma once

namespace kestrelink {

/// Registers the SAML element classes with the element factory: once, from any thread. Whatever
/// parses a message calls it first.
void registerSAMLElementClasses();

}  // namespace kestrelink
