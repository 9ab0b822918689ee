#include "MetadataCommand.h"

#include <cstdio>

#include <CLI/CLI.hpp>

#include "kestrelink/signin/Client.h"

#include "InputFile.h"

namespace ksaml {

MetadataCommand::MetadataCommand(CLI::App& app)
    : command_(*app.add_subcommand("metadata", "Write the client's metadata, for providers")) {
  command_.footer("Exit status: 0 written, 2 usage or unusable input.");
  command_.add_option("--issuer", issuer_, "The client's entity ID")->type_name("ID")->required();
  command_.add_option("--acs-url", acsUrl_, "The URL that responses to a sign-in are posted to")
      ->type_name("URL")
      ->required();
  command_.add_option("--logout-url", logoutUrl_, "The URL that logout responses are sent to")
      ->type_name("URL");
  command_.add_option("--certificate", certificateFile_, "The certificate of the key that signs")
      ->type_name("FILE");
  command_
      .add_option("--encryption-certificate", encryptionFile_,
                  "The certificate of the key that decrypts")
      ->type_name("FILE");
  command_.add_flag("--signs-requests", signsRequests_, "Every request is signed");
}

bool MetadataCommand::isChosen() const { return command_.parsed(); }

int MetadataCommand::run() const {
  kestrelink::signin::Client client{
      .entityId = issuer_, .assertionConsumer = acsUrl_, .logoutService = logoutUrl_};
  const auto take = [](const std::optional<std::string>& file, std::string& certificate) {
    const auto text = file ? readInput(*file) : std::string();
    certificate = text.value_or("");
    return text.has_value();
  };
  if (!take(certificateFile_, client.signingCertificate) ||
      !take(encryptionFile_, client.encryptionCertificate)) {
    return 2;
  }
  kestrelink::signin::Policy policy;
  policy.signRequests = signsRequests_;
  const std::string metadata = metadataOf(client, policy);
  if (metadata.empty()) {
    std::fputs("ksaml: an option has a character that XML has not, or is not UTF-8\n", stderr);
    return 2;
  }
  std::fputs(metadata.c_str(), stdout);
  return finishedOutput() ? 0 : 2;
}

}  // namespace ksaml
