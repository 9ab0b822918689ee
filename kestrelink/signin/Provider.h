#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/saml/elements/SAMLDate.h"
#include "kestrelink/signin/Export.h"
#include "kestrelink/signin/Policy.h"

namespace kestrelink::signin {

/// How a message travels (SAML 2.0 bindings, sections 3.4, 3.5 and 3.2).
enum class Binding { redirect, post, soap };

struct Endpoint {
  Binding binding = Binding::redirect;
  std::string url;
};

/// What is known of an identity provider: from its metadata, or filled in by hand.
///
///     std::string reason;
///     const auto provider = signin::providerFromMetadata(text, "https://idp.example", reason);
///     if (!provider) return giveUp(reason);
struct Provider {
  /// The issuer that its messages must name.
  std::string entityId;
  /// Where it takes requests, in its order of preference.
  std::vector<Endpoint> signOn = {};
  std::vector<Endpoint> logout = {};
  std::vector<Endpoint> attributes = {};
  std::vector<Endpoint> decisions = {};
  /// Certificates (PEM) of the keys that it may sign with: any of them, so that it can replace its
  /// key. Their dates and issuers are not looked at. Without one nothing it sends is believed.
  std::vector<std::string> signingCertificates = {};
  /// It accepts signed requests only.
  bool wantsSignedRequests = false;
  /// From then on nothing of it is believed; `std::nullopt`: no end.
  std::optional<SAMLDate> validUntil = {};
};

/// Reads an identity provider from SAML 2.0 metadata of at most 16 MB: from an "EntityDescriptor",
/// or the one with that entity ID in an "EntitiesDescriptor". An empty entity ID stands for the
/// only one that there is. Endpoints are taken that browsers (sign-in, logout) or SOAP (logout,
/// queries) use over http or https; certificates, of all its SAML 2.0 roles. A key whose use is not
/// stated signs too. The earliest "validUntil" in and around the descriptor holds; "cacheDuration"
/// is the client's to mind.
///
/// With a `certificate` (PEM) the metadata must be signed by its key, around the descriptor that is
/// read. Without it nothing is verified: take metadata only from where the client trusts it. Of the
/// policy, `clock`, `acceptSha1` and `leastRsaBits` count.
///
/// `std::nullopt` with the reason, an English sentence, when the text is not such metadata, has
/// expired, has no such provider, or is not signed as asked. No file and no URL is read.
KESTRELINK_SIGNIN_EXPORT std::optional<Provider> providerFromMetadata(
    std::string_view metadata, std::string_view entityId, std::string& reason,
    std::string_view certificate = {}, const Policy& policy = {});

}  // namespace kestrelink::signin
