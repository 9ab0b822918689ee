#pragma once

namespace kestrelink {

/// Registers the SAML element classes with the element factory: once, from any thread. Call it
/// before parsing a message.
void registerSAMLElementClasses();

}  // namespace kestrelink
