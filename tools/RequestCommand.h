#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrelink/saml/KestrelinkSAML.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace ksaml {

/// `ksaml request KIND`: makes a request and writes its XML text.
class RequestCommand {
 public:
  /// Adds the subcommands to the command line.
  explicit RequestCommand(CLI::App& app);

  /// Makes the request that the command line chose, if it chose one. The program's exit status: 0
  /// when it was written, 2 when it was not.
  int run() const;

 private:
  using Document = std::shared_ptr<kestrelink::XMLWrapperDoc>;

  // The subcommands and their options.
  CLI::App& add(CLI::App& request, const char* name, const char* description,
                Document (RequestCommand::*make)() const);
  void addAuthn(CLI::App& request);
  void addAttributes(CLI::App& request);
  void addAuthz(CLI::App& request);
  void addLogout(CLI::App& request);
  void addBindings(CLI::App& command);
  void addSubject(CLI::App& command);
  void addChannel(CLI::App& command);
  CLI::Option& addIssuer(CLI::App& command);

  // What each of them makes; null, with a line on standard error, when it cannot be made.
  Document authn() const;
  Document attributes() const;
  Document authz() const;
  Document logout() const;
  /// Copies the subject from the file of `--subject-from`, if it was given; false when that fails.
  /// `schema` is null except for decision queries, as in `setSubjectFromResponse`.
  template <class Request>
  bool takesSubject(const Request& request, kestrelink::SharedBytes schema) const;
  bool takesNameId(const kestrelink::SAMLLogoutRequest& request) const;
  /// The request with the destination and in the standard form, if the command line asks for them.
  template <class Request>
  Document finished(const std::shared_ptr<Request>& request) const;
  /// The text in the binding that the command line chose, signed if there is a key. `std::nullopt`,
  /// with a line on standard error, when that fails.
  std::optional<std::string> carried(const std::string& text) const;

  std::optional<std::string> issuer_, providerName_, subjectFile_, channel_, resource_, reason_,
      notOnOrAfter_, sessionIndex_, destination_, acsUrl_, nameIdFile_, redirect_, post_, keyFile_,
      certificateFile_, nameIdFormat_;
  std::string relayState_;
  std::vector<std::string> attributes_, actions_, contextClasses_;
  bool passive_ = false, forceAuthn_ = false, base64_ = false, soap_ = false, standard_ = false,
       printId_ = false, allowCreate_ = false;
  std::function<Document()> chosen_;
};

}  // namespace ksaml
