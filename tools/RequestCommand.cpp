#include "RequestCommand.h"

#include <cstdio>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

#include "kestrelink/signin/Bindings.h"
#include "kestrelink/standard/StandardForms.h"

#include "InputFile.h"
#include "InputMessage.h"
#include "Reading.h"
#include "Table.h"

namespace ksaml {
namespace {

kestrelink::SAMLParserController& controller() {
  return kestrelink::SAMLParserController::sharedInstance();
}

std::nullptr_t refuse(const char* format, const std::string& what) {
  std::fprintf(stderr, format, printable(what).c_str());
  return nullptr;
}

std::shared_ptr<kestrelink::SAMLResponse> responseIn(const std::string& message,
                                                     kestrelink::SharedBytes schema) {
  std::optional<kestrelink::ErrorInfo> ignored;
  return responseFrom(controller(), message, std::move(schema), &ignored);
}

bool isValid(const std::string& request) {
  const auto bytes = std::make_shared<const std::string>(request);
  return kestrelink::XMLWrapperDoc::initWithData(bytes, controller().schema()) != nullptr;
}

std::vector<std::string> split(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream rest(list + ",");
  for (std::string part; std::getline(rest, part, ',');) parts.push_back(part);
  return parts;
}

}  // namespace

RequestCommand::RequestCommand(CLI::App& app) {
  CLI::App& request = *app.add_subcommand("request", "Make a request and write its XML text");
  request.require_subcommand(1);
  addAuthn(request);
  addAttributes(request);
  addAuthz(request);
  addLogout(request);
}

CLI::App& RequestCommand::add(CLI::App& request, const char* name, const char* description,
                              Document (RequestCommand::*make)() const) {
  CLI::App& command = *request.add_subcommand(name, description);
  command.footer("Exit status: 0 written, 2 usage or unusable input.");
  command.add_flag("--standard", standard_,
                   "Write the form that the SAML 2.0 protocol schema accepts");
  command.add_option("--destination", destination_, "The URL that the request is sent to")
      ->type_name("URL");
  addBindings(command);
  command.final_callback([this, make] { chosen_ = [this, make] { return (this->*make)(); }; });
  return command;
}

void RequestCommand::addBindings(CLI::App& command) {
  CLI::Option* const base64 =
      command.add_flag("--base64", base64_, "Write the form value that a browser posts");
  CLI::Option* const soap = command.add_flag("--soap", soap_, "Write it in a SOAP 1.1 envelope");
  CLI::Option* const redirect = command.add_option(
      "--redirect", redirect_, "Write this URL with the request in its query (HTTP-Redirect)");
  CLI::Option* const post = command.add_option(
      "--post", post_, "Write an HTML page that posts the request to this URL (HTTP-POST)");
  redirect->type_name("URL")->excludes(base64)->excludes(soap)->excludes(post);
  post->type_name("URL")->excludes(base64)->excludes(soap);
  soap->excludes(base64);
  command.add_option("--relay-state", relayState_, "What the provider sends back")
      ->type_name("TEXT");
  command.add_option("--sign-with", keyFile_, "Sign the request with this private key (PEM)")
      ->type_name("FILE");
  command.add_option("--certificate", certificateFile_, "Its certificate, which the request names")
      ->type_name("FILE");
  command.add_flag("--print-id", printId_, "Write the request's ID first, on a line of its own");
}

void RequestCommand::addSubject(CLI::App& command) {
  command
      .add_option("--subject-from", subjectFile_,
                  "Name the subscriber: the subject of the response in this file")
      ->type_name("FILE");
}

void RequestCommand::addChannel(CLI::App& command) {
  command.add_option("--channel", channel_, "The identifier of the channel that asks")
      ->type_name("ID")
      ->required();
}

CLI::Option& RequestCommand::addIssuer(CLI::App& command) {
  return *command
              .add_option("--issuer", issuer_, "The client's identifier, which the provider knows")
              ->type_name("TEXT");
}

void RequestCommand::addAuthn(CLI::App& request) {
  CLI::App& command = add(request, "authn", "An authentication request: sign the subscriber in",
                          &RequestCommand::authn);
  addIssuer(command).required();
  command
      .add_option("--provider-name", providerName_,
                  "The client's name, for the provider to show to the subscriber")
      ->type_name("TEXT");
  command.add_option("--acs-url", acsUrl_, "The URL that the response is to be posted to")
      ->type_name("URL");
  command.add_flag("--passive", passive_, "The provider must not show its sign-in page");
  command.add_flag("--force-authn", forceAuthn_,
                   "The subscriber must sign in even if signed in already");
  command
      .add_option("--name-id-format", nameIdFormat_,
                  "The format of the name identifier (default transient)")
      ->type_name("URI");
  command.add_flag("--allow-create", allowCreate_, "The provider may make a new name identifier");
  command
      .add_option("--context-class", contextClasses_,
                  "A way of authentication that is accepted: the URI of its class")
      ->type_name("URI")
      ->expected(1)
      ->take_all();
  addSubject(command);
}

void RequestCommand::addAttributes(CLI::App& request) {
  CLI::App& command = add(request, "attributes", "An attribute query: who is the subscriber",
                          &RequestCommand::attributes);
  addChannel(command);
  command
      .add_option("--attribute", attributes_,
                  "Ask for the attribute of this name, or for these values of it")
      ->type_name("NAME[=VALUE,VALUE...]")
      ->expected(1)
      ->take_all();
  addSubject(command);
}

void RequestCommand::addAuthz(CLI::App& request) {
  CLI::App& command =
      add(request, "authz", "An authorisation decision query: may the subscriber do it",
          &RequestCommand::authz);
  addChannel(command);
  command.add_option("--resource", resource_, "The URL of what the subscriber wants to watch")
      ->type_name("URL")
      ->required();
  command.add_option("--action", actions_, "What to do with the resource (default Play)")
      ->type_name("NAME")
      ->expected(1)
      ->take_all();
  addSubject(command);
}

void RequestCommand::addLogout(CLI::App& request) {
  CLI::App& command =
      add(request, "logout", "A logout request: end the session", &RequestCommand::logout);
  addIssuer(command);
  command
      .add_option("--reason", reason_,
                  "Why the session ends: a URI such as urn:oasis:names:tc:SAML:2.0:logout:user")
      ->type_name("TEXT");
  command
      .add_option("--not-on-or-after", notOnOrAfter_,
                  "When the request expires, such as 2030-01-31T12:00:00Z")
      ->type_name("DATE");
  command
      .add_option("--session-index", sessionIndex_,
                  "The session to end, as an earlier response named it")
      ->type_name("TEXT");
  command
      .add_option("--name-id-from", nameIdFile_,
                  "Name the subscriber: the name identifier of the response in this file")
      ->type_name("FILE");
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
  if (!isValid(*text)) {
    if (standard_) {
      std::fputs("ksaml: the SAML 2.0 protocol schema refuses what the request was given\n",
                 stderr);
      return 2;
    }
    std::fputs(
        "ksaml: the SAML 2.0 protocol schema refuses this request; --standard writes the form that "
        "it accepts\n",
        stderr);
  }
  const auto message = carried(*text);
  if (!message) return 2;
  if (printId_) {
    const auto id = kestrelink::standard::attributeText(*request->documentElement(), "ID");
    std::printf("%s\n", id.value_or("").c_str());
  }
  std::printf("%s\n", message->c_str());
  return finishedOutput() ? 0 : 2;
}

std::optional<std::string> RequestCommand::carried(const std::string& text) const {
  namespace signin = kestrelink::signin;
  const auto key = keyFile_ ? readInput(*keyFile_) : std::string();
  const auto certificate = certificateFile_ ? readInput(*certificateFile_) : std::string();
  if (!key || !certificate) return std::nullopt;
  const signin::Endpoint endpoint = redirect_
                                        ? signin::Endpoint{signin::Binding::redirect, *redirect_}
                                    : post_ ? signin::Endpoint{signin::Binding::post, *post_}
                                            : signin::Endpoint{signin::Binding::soap, ""};
  std::string reason;
  std::optional<std::string> message;
  if (redirect_ || post_ || soap_) {
    message = signin::encode(text, {endpoint, relayState_, *key, *certificate}, reason);
  } else {
    message = key->empty() ? text : signin::signedRequest(text, *key, *certificate, reason);
    if (message && base64_) message = signin::formValue(*message);
  }
  if (!message) refuse("ksaml: %s\n", reason);
  return message;
}

template <class Request>
RequestCommand::Document RequestCommand::finished(const std::shared_ptr<Request>& request) const {
  namespace standard = kestrelink::standard;
  if (destination_) standard::setDestination(*request, *destination_);
  const auto made = standard_ ? standard::toStandardForm(*request) : standard::StandardForm::made;
  if (made == standard::StandardForm::made) return request;
  return refuse("ksaml: there is no standard form: %s\n", standard::reasonOf(made));
}

template <class Request>
bool RequestCommand::takesSubject(const Request& request, kestrelink::SharedBytes schema) const {
  if (!subjectFile_) return true;
  const auto message = messageInFile(*subjectFile_);
  if (!message) return false;
  const auto response = responseIn(*message, std::move(schema));
  if (response && kestrelink::standard::setSubjectFrom(request, *response)) return true;
  refuse("ksaml: there is no subject in %s\n", *subjectFile_);
  return false;
}

bool RequestCommand::takesNameId(const kestrelink::SAMLLogoutRequest& request) const {
  if (!nameIdFile_) return true;
  const auto message = messageInFile(*nameIdFile_);
  if (!message) return false;
  const auto response = responseIn(*message, controller().schema());
  if (response && kestrelink::standard::setNameIdFrom(request, *response)) return true;
  refuse("ksaml: there is no name identifier in %s\n", *nameIdFile_);
  return false;
}

RequestCommand::Document RequestCommand::authn() const {
  const auto request = controller().newAuthNRequest(*issuer_);
  if (providerName_) request->setProviderName(*providerName_);
  if (passive_) request->setIsPassive(true);
  if (forceAuthn_) request->setForceAuthN(true);
  if (acsUrl_) kestrelink::standard::setAssertionConsumerService(*request, *acsUrl_);
  const auto policy = request->requestElement()->nameIdPolicy();
  if (nameIdFormat_) policy->setAttributeWithName("Format", *nameIdFormat_);
  if (allowCreate_) policy->setAttributeWithName("AllowCreate", "true");
  kestrelink::standard::setContextClasses(*request, contextClasses_);
  return takesSubject(*request, nullptr) ? finished(request) : nullptr;
}

RequestCommand::Document RequestCommand::attributes() const {
  const auto query = controller().newAttributeQuery(*channel_);
  for (const std::string& attribute : attributes_) {
    const std::size_t equals = attribute.find('=');
    const bool hasValues = equals != std::string::npos;
    query->addAttribute(attribute.substr(0, equals), hasValues ? split(attribute.substr(equals + 1))
                                                               : std::vector<std::string>());
  }
  return takesSubject(*query, nullptr) ? finished(query) : nullptr;
}

RequestCommand::Document RequestCommand::authz() const {
  kestrelink::standard::DecisionQuestion question{.resource = *resource_, .channel = *channel_};
  if (!actions_.empty()) question.actions.assign(actions_.begin(), actions_.end());
  const auto query = kestrelink::standard::newDecisionQuery(controller(), question);
  return takesSubject(*query, controller().schema()) ? finished(query) : nullptr;
}

RequestCommand::Document RequestCommand::logout() const {
  const auto request = controller().newLogoutRequest();
  if (issuer_) request->setIssuer(*issuer_);
  if (reason_) request->setReason(*reason_);
  if (notOnOrAfter_) {
    request->requestElement()->setAttributeWithName("NotOnOrAfter", *notOnOrAfter_);
    if (!request->notOnOrAfter()) {
      return refuse("ksaml: %s is no date of the form 2030-01-31T12:00:00Z\n", *notOnOrAfter_);
    }
  }
  if (sessionIndex_) kestrelink::standard::setSessionIndex(*request, *sessionIndex_);
  return takesNameId(*request) ? finished(request) : nullptr;
}

}  // namespace ksaml
