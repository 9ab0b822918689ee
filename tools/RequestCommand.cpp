#include "RequestCommand.h"

#include <cstdio>
#include <sstream>

#include <CLI/CLI.hpp>

#include "Base64Text.h"
#include "InputFile.h"
#include "TimeText.h"

namespace ksaml {
namespace {

kestrelink::SAMLParserController& controller() {
  return kestrelink::SAMLParserController::sharedInstance();
}

std::nullptr_t refuse(const char* format, const std::string& what) {
  std::fprintf(stderr, format, what.c_str());
  return nullptr;
}

std::vector<std::string> split(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream rest(list + ",");
  for (std::string part; std::getline(rest, part, ',');) parts.push_back(part);
  return parts;
}

}  // namespace

RequestCommand::RequestCommand(CLI::App& app) {
  CLI::App* const request = app.add_subcommand("request", "Make a request and write its XML text");
  request->require_subcommand(1);
  const auto add = [this, request](const char* name, const char* description,
                                   Document (RequestCommand::*make)() const) {
    CLI::App* const command = request->add_subcommand(name, description);
    command->footer("Exit status: 0 written, 2 usage or unusable input.");
    command->add_flag("--base64", base64_, "Write the form value that a browser posts");
    command->final_callback([this, make] { chosen_ = [this, make] { return (this->*make)(); }; });
    return command;
  };
  const auto addSubject = [this](CLI::App* command) {
    command->add_option("--subject-from", subjectFile_, "Take the subject of this response")
        ->type_name("FILE");
  };

  CLI::App* const authn =
      add("authn", "An authentication request: sign the subscriber in", &RequestCommand::authn);
  authn->add_option("--issuer", issuer_, "Who asks")->type_name("TEXT")->required();
  authn->add_option("--provider-name", providerName_, "Name of the provider")->type_name("TEXT");
  authn->add_flag("--passive", passive_, "Without asking the subscriber");
  authn->add_flag("--force-authn", forceAuthn_, "Even if already signed in");
  addSubject(authn);

  CLI::App* const attributes =
      add("attributes", "An attribute query: who is the subscriber", &RequestCommand::attributes);
  attributes->add_option("--channel", channel_, "The channel that asks")
      ->type_name("ID")
      ->required();
  attributes->add_option("--attribute", attributes_, "Ask for it, or for these values of it")
      ->type_name("NAME[=VALUE,VALUE...]")
      ->expected(1)
      ->take_all();
  addSubject(attributes);

  CLI::App* const authz = add("authz", "An authorisation decision query: may the subscriber do it",
                              &RequestCommand::authz);
  authz->add_option("--channel", channel_, "The channel that asks")->type_name("ID")->required();
  authz->add_option("--resource", resource_, "What it is about")->type_name("URL")->required();
  authz->add_option("--action", actions_, "What to do with it (default Play)")
      ->type_name("NAME")
      ->expected(1)
      ->take_all();
  addSubject(authz);

  CLI::App* const logout =
      add("logout", "A logout request: end the session", &RequestCommand::logout);
  logout->add_option("--issuer", issuer_, "Who asks")->type_name("TEXT");
  logout->add_option("--reason", reason_, "Why")->type_name("TEXT");
  logout->add_option("--not-on-or-after", notOnOrAfter_, "When the request expires")
      ->type_name("DATE");
  logout->add_option("--session-index", sessionIndex_, "Which session")->type_name("TEXT");
}

int RequestCommand::run() const {
  if (!chosen_) return 0;
  const Document request = chosen_();
  if (!request) return 2;
  const auto text = request->xmlString();
  if (!text) {
    std::fputs("ksaml: the request could not be written\n", stderr);
    return 2;
  }
  const std::string output = base64_ ? toBase64(*text) : *text;
  std::printf("%s\n", output.c_str());
  return finishedOutput() ? 0 : 2;
}

template <class Request>
bool RequestCommand::takesSubject(Request& request) const {
  if (!subjectFile_) return true;
  const auto response = readInput(*subjectFile_);
  if (!response) return false;
  request.setSubjectFromResponse(*response);
  if (request.requestElement()->subject()) return true;
  refuse("ksaml: there is no subject in %s\n", *subjectFile_);
  return false;
}

RequestCommand::Document RequestCommand::authn() const {
  const auto request = controller().newAuthNRequest(*issuer_);
  if (providerName_) request->setProviderName(*providerName_);
  if (passive_) request->setIsPassive(true);
  if (forceAuthn_) request->setForceAuthN(true);
  return takesSubject(*request) ? request : nullptr;
}

RequestCommand::Document RequestCommand::attributes() const {
  const auto query = controller().newAttributeQuery(*channel_);
  for (const std::string& attribute : attributes_) {
    const std::size_t equals = attribute.find('=');
    const bool hasValues = equals != std::string::npos;
    query->addAttribute(attribute.substr(0, equals), hasValues ? split(attribute.substr(equals + 1))
                                                               : std::vector<std::string>());
  }
  return takesSubject(*query) ? query : nullptr;
}

RequestCommand::Document RequestCommand::authz() const {
  const auto query = controller().newAuthZQuery(*resource_, *channel_);
  for (const std::string& action : actions_) query->addAction(action);
  if (actions_.empty()) query->addAction(kestrelink::SAMLAuthZDecisionQueryActionPlay);
  return takesSubject(*query) ? query : nullptr;
}

RequestCommand::Document RequestCommand::logout() const {
  const auto request = controller().newLogoutRequest();
  if (issuer_) request->setIssuer(*issuer_);
  if (reason_) request->setReason(*reason_);
  if (notOnOrAfter_) {
    const auto date = dateFromText(*notOnOrAfter_);
    if (!date) {
      return refuse("ksaml: %s is no date of the form 2030-01-31T12:00:00Z\n", *notOnOrAfter_);
    }
    request->setNotOnOrAfter(*date);
  }
  if (sessionIndex_) request->requestElement()->setSessionIndex(*sessionIndex_);
  return request;
}

}  // namespace ksaml
