// Lasso includes GLib and libxml2 as C, which to a C++ compiler they are not: they come first.
// clang-format off
#include <glib-object.h>
#include <libxml/tree.h>
#include <lasso/lasso.h>
#include <lasso/xml/saml-2.0/samlp2_authn_request.h>
// clang-format on

#include "bench/Peers.h"
#include "bench/Raw.h"

namespace bench {

std::string lassoRequest(const std::string& issuer) {
  static const int initialised = lasso_init();
  if (initialised != 0) return {};
  LassoNode* const node = lasso_samlp2_authn_request_new();
  auto* const request = LASSO_SAMLP2_AUTHN_REQUEST(node);
  auto* const header = LASSO_SAMLP2_REQUEST_ABSTRACT(node);
  const Stamp stamp = newStamp();
  header->ID = g_strdup(stamp.identifier.c_str());
  header->Version = g_strdup("2.0");
  header->IssueInstant = g_strdup(stamp.instant.c_str());
  header->Issuer =
      LASSO_SAML2_NAME_ID(lasso_saml2_name_id_new_with_string(std::string(issuer).data()));
  request->NameIDPolicy = LASSO_SAMLP2_NAME_ID_POLICY(lasso_samlp2_name_id_policy_new());
  request->NameIDPolicy->Format = g_strdup("urn:oasis:names:tc:SAML:2.0:nameid-format:transient");
  request->NameIDPolicy->AllowCreate = FALSE;

  char* const dumped = lasso_node_dump(node);
  const std::string text = dumped;
  g_free(dumped);
  lasso_node_destroy(node);
  return text;
}

}  // namespace bench
