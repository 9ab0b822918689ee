// Finds an entity in SAML 2.0 metadata.
#pragma once

#include <string_view>

#include "kestrelink/signin/Provider.h"
#include "kestrelink/signin/Signature.h"
#include "kestrelink/signin/XmlTree.h"

namespace kestrelink::signin {

/// The URI that names the binding in metadata.
const char* uriOf(Binding binding);

struct Entity {
  Owned<xmlDoc> metadata;
  xmlNode* descriptor;  // an "EntityDescriptor" in it
};

/// The entity of that ID; without an ID the only entity. With a signer, only bytes that it signed
/// are looked at. Refused: `notConfigured` when there is not exactly one.
Entity entityIn(std::string_view metadata, std::string_view entityId, const Signer* signer);

}  // namespace kestrelink::signin
