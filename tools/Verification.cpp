#include "Verification.h"

#include <cstdio>
#include <utility>

#include <CLI/CLI.hpp>

#include "InputFile.h"
#include "Table.h"

namespace ksaml {

namespace signin = kestrelink::signin;

Verification::Verification(CLI::App& command) {
  const char* const group = "To verify what was signed";
  const auto add = [&](const char* name, auto& value, const char* description, const char* type) {
    return command.add_option(name, value, description)->type_name(type)->group(group);
  };
  add("--metadata", metadataFile_, "The provider's metadata", "FILE");
  add("--certificate", certificateFiles_, "A certificate (PEM) that the provider signs with",
      "FILE")
      ->expected(1)
      ->take_all();
  add("--provider", providerId_, "The entity ID of the provider", "ID");
  add("--client-key", keyFiles_, "A private key (PEM) that decrypts", "FILE")
      ->expected(1)
      ->take_all();
  add("--audience", audience_, "The client's entity ID", "ID");
  add("--acs-url", acsUrl_, "The URL that the message was sent to", "URL");
  add("--in-response-to", inResponseTo_, "The ID of the request", "ID");
  add("--query-about", queryAbout_,
      "The request was a query about the subscriber of this name identifier", "TEXT");
  add("--clock-skew", clockSkew_, "By how much clocks may differ (default 60)", "SECONDS");
  add("--session-length", sessionSeconds_, "How long a session lasts whose end is not stated",
      "SECONDS");
  command.add_flag("--accept-sha1", acceptSha1_, "Accept signatures with SHA-1")->group(group);
}

std::optional<signin::Provider> Verification::provider() const {
  signin::Provider provider{.entityId = providerId_};
  if (metadataFile_) {
    const auto metadata = readInput(*metadataFile_);
    std::string reason;
    auto found =
        metadata ? signin::providerFromMetadata(*metadata, providerId_, reason) : std::nullopt;
    if (metadata && !found) {
      std::fprintf(stderr, "ksaml: %s: %s\n", printable(*metadataFile_).c_str(),
                   printable(reason).c_str());
    }
    if (!found) return std::nullopt;
    provider = std::move(*found);
  }
  for (const std::string& file : certificateFiles_) {
    auto certificate = readInput(file);
    if (!certificate) return std::nullopt;
    provider.signingCertificates.push_back(std::move(*certificate));
  }
  return provider;
}

signin::Policy Verification::policy() const {
  signin::Policy policy;
  policy.acceptSha1 = acceptSha1_;
  policy.acceptUnsolicited = true;
  if (clockSkew_) policy.clockSkew = std::chrono::seconds(*clockSkew_);
  if (sessionSeconds_) policy.sessionWithoutEnd = std::chrono::seconds(*sessionSeconds_);
  return policy;
}

bool Verification::start() {
  auto from = provider();
  if (!from) return false;
  signin::Client client{
      .entityId = audience_, .assertionConsumer = acsUrl_, .logoutService = acsUrl_};
  for (const std::string& file : keyFiles_) {
    auto key = readInput(file);
    if (!key) return false;
    client.decryptionKeys.push_back(std::move(*key));
  }
  signIn_ = std::make_unique<const signin::SignIn>(std::move(client), std::move(*from), policy());
  return true;
}

signin::Result Verification::resultOf(const std::string& received, const std::string& root) const {
  const auto asked = queryAbout_                ? signin::Asked::query
                     : root == "LogoutResponse" ? signin::Asked::logout
                                                : signin::Asked::signIn;
  const std::string pending = inResponseTo_ || asked != signin::Asked::signIn
                                  ? signIn_->pendingFor({asked, inResponseTo_.value_or(""),
                                                         audience_, queryAbout_.value_or("")})
                                  : "";
  switch (asked) {
    case signin::Asked::query:
      return signIn_->finishQuery(received, pending);
    case signin::Asked::logout:
      return signIn_->finishLogout(received, pending);
    case signin::Asked::signIn:
      break;
  }
  return signIn_->finish(received, pending);
}

}  // namespace ksaml
