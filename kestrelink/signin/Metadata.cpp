#include "kestrelink/signin/Metadata.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kestrelink::signin {
namespace {

// A federation has thousands of entities.
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

void find(xmlNode* element, std::string_view entityId, std::vector<xmlNode*>& found) {
  if (is(element, kMetadata, "EntityDescriptor")) {
    if (entityId.empty() || attribute(element, "entityID") == entityId) found.push_back(element);
    return;
  }
  if (!is(element, kMetadata, "EntitiesDescriptor")) return;
  for (xmlNode* child = element->children; child != nullptr; child = child->next) {
    find(child, entityId, found);
  }
}

Entity entityIn(Owned<xmlDoc> metadata, std::string_view entityId) {
  std::vector<xmlNode*> found;
  find(xmlDocGetRootElement(metadata.get()), entityId, found);
  if (found.size() == 1) return {std::move(metadata), found.front()};
  refuse(Reason::notConfigured,
         std::string(found.empty() ? "there is no entity " : "there is more than one entity ") +
             (entityId.empty() ? "" : quoted(entityId) + " ") + "in the SAML 2.0 metadata");
}

// From the root down: verifying a signature takes its "KeyInfo" away, which may itself be signed by
// one further out.
std::vector<xmlNode*> withAncestors(xmlNode* descriptor) {
  std::vector<xmlNode*> all;
  for (xmlNode* at = descriptor; at->type == XML_ELEMENT_NODE; at = at->parent) all.push_back(at);
  std::reverse(all.begin(), all.end());
  return all;
}

Owned<xmlDoc> signedPart(xmlNode* descriptor, const Signer& signer) {
  std::optional<Refusal> refused;
  for (const xmlNode* element : withAncestors(descriptor)) {
    for (xmlNode* signature : children(element, kSignature, "Signature")) {
      try {
        return reparsed(signedText(signature, signer));
      } catch (const Refusal& refusal) {
        if (!refused) refused = refusal;
      }
    }
  }
  if (refused) throw Refusal(*refused);
  refuse(Reason::notSigned, "the metadata of the provider is not signed");
}

}  // namespace

const char* uriOf(Binding binding) {
  switch (binding) {
    case Binding::redirect:
      return "urn:oasis:names:tc:SAML:2.0:bindings:HTTP-Redirect";
    case Binding::post:
      return "urn:oasis:names:tc:SAML:2.0:bindings:HTTP-POST";
    case Binding::soap:
      break;
  }
  return "urn:oasis:names:tc:SAML:2.0:bindings:SOAP";
}

Entity entityIn(std::string_view metadata, std::string_view entityId, const Signer* signer) {
  Entity entity = entityIn(parsed(metadata, kMostBytes), entityId);
  if (signer == nullptr) return entity;
  return entityIn(signedPart(entity.descriptor, *signer), entityId);
}

}  // namespace kestrelink::signin
