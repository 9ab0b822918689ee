// Signs a subscriber in with an identity provider. Start here.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kestrelink/signin/Client.h"
#include "kestrelink/signin/Export.h"
#include "kestrelink/signin/Memory.h"
#include "kestrelink/signin/Policy.h"
#include "kestrelink/signin/Provider.h"
#include "kestrelink/signin/Result.h"

namespace kestrelink::signin {

/// A request that is ready to be sent. Exactly one of `url`, `form` and `body` is filled in, unless
/// the request could not be made: then all are empty and `reason` says why.
struct Started {
  std::string url;   ///< open it in the browser (HTTP-Redirect)
  std::string form;  ///< an HTML page that posts itself: show it in the browser (HTTP-POST)
  std::string body;  ///< post it to `endpoint` as text/xml with an empty SOAPAction header (SOAP)
  std::string endpoint;
  /// Keep this text until the response comes, and hand it in with it. It is not signed: keep it
  /// where only the client can write, such as the browser's session on the client's side.
  std::string pending;
  std::string id;      ///< the request's ID
  std::string reason;  ///< an English sentence; empty when the request was made

  explicit operator bool() const { return reason.empty(); }
};

/// How to sign in (SAML 2.0 core, section 3.4.1). As made: as the provider likes.
struct Wishes {
  bool passive = false;  ///< only if the provider needs to show nothing
  bool forced = false;   ///< the subscriber must prove who they are, even with a session there
  std::string relayState = {};
  /// The format of the name identifier, a URI. Empty: transient.
  std::string nameIdFormat = {};
  /// Whether the provider may make a new name identifier.
  bool allowCreate = true;
  /// Accepted ways of authentication (URIs of classes); empty: any.
  std::vector<std::string> contextClasses = {};
};

/// What a request asks for.
enum class Asked { signIn, logout, query };

/// A request that was made without a `SignIn`.
struct MadeRequest {
  Asked asked = Asked::signIn;
  std::string id;
  /// Of a query: its issuer, and the name identifier that it is about.
  std::string issuer = {};
  std::string subject = {};
};

/// Signs subscribers of one provider in and out, and asks the provider about them.
///
///     const signin::SignIn signIn(client, *provider, policy);
///     const auto started = signIn.begin();
///     keep(started.pending);
///     show(started.url);  // or started.form; then, with what the provider posted:
///     const auto result = signIn.finish(posted, pending);
///     if (result.verdict == signin::Verdict::signedIn) use(*result.session);
///     else show(result.explanation);
///
/// It does no networking: it returns what to send and takes what came back. What came back may be
/// the posted body, the query string or the URL, base64, a SOAP envelope, or XML text. Everything
/// that is not verified is refused with a reason; no key, file or URL that a message names is used.
///
/// Throws only `std::bad_alloc`.
///
/// Threads: all operations may be called from several threads at once.
class KESTRELINK_SIGNIN_EXPORT SignIn {
 public:
  /// Without a `memory` it uses one of its own, so that a response is accepted once by this object.
  /// A client with several objects or processes shares one.
  SignIn(Client client, Provider provider, Policy policy = {},
         std::shared_ptr<Memory> memory = nullptr);
  ~SignIn();
  SignIn(const SignIn&) = delete;
  SignIn& operator=(const SignIn&) = delete;

  /// Makes a sign-in request (SAML 2.0 profiles, section 4.1).
  [[nodiscard]] Started begin(const Wishes& wishes = {}) const;
  /// Takes the provider's response to it. Without `pending` the response must be unsolicited, which
  /// `Policy::acceptUnsolicited` has to allow.
  [[nodiscard]] Result finish(std::string_view received, std::string_view pending = {}) const;

  /// The session of an earlier `Session::text`: `signedIn` until it ends.
  [[nodiscard]] Result resume(std::string_view sessionText) const;

  /// Makes a logout request (SAML 2.0 profiles, section 4.4) with the session's name identifier and
  /// index.
  [[nodiscard]] Started beginLogout(const Session& session, std::string_view relayState = {}) const;
  [[nodiscard]] Result finishLogout(std::string_view received, std::string_view pending) const;

  /// Asks for attributes of the subscriber by name; without names for all (SAML 2.0 core, section
  /// 3.3.2.3). The issuer of the query is `issuer`, such as a channel; empty: the client's.
  [[nodiscard]] Started askAttributes(const Session& session, const std::vector<std::string>& names,
                                      std::string_view issuer = {}) const;
  /// Asks whether the subscriber may do that with the resource (SAML 2.0 core, section 3.3.2.4).
  struct Question {
    std::string resource;
    std::string action = "Play";
    std::string actionNamespace = {};  ///< empty: `standard::kDefaultActionNamespace`
  };
  [[nodiscard]] Started askDecision(const Session& session, const Question& question,
                                    std::string_view issuer = {}) const;
  /// Takes the response to a query: `answered`, or `denied`. Read the values from
  /// `Result::response`, a decision with `standard::decisionForResource`.
  [[nodiscard]] Result finishQuery(std::string_view received, std::string_view pending) const;

  /// What `Started::pending` is for a request that was made now in another way.
  [[nodiscard]] std::string pendingFor(const MadeRequest& request) const;

 private:
  struct Parts;
  std::unique_ptr<const Parts> parts_;
};

}  // namespace kestrelink::signin
