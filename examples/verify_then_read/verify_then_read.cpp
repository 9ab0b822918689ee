// A client's whole way from a provider's answer to a subscriber: verify, keep only what was signed,
// read that, compare the audience.

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "kestrelink/saml/KestrelinkSAML.h"

#include "VerifiedAnswer.h"

namespace {

std::optional<std::string> content(const char* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string bytes(std::istreambuf_iterator<char>(file), {});
  return file.bad() ? std::nullopt : std::optional(bytes);
}

// Every restriction has to name the audience, and there has to be one.
bool isFor(const kestrelink::SAMLAssertion& assertion, const std::string& audience) {
  const auto conditions = assertion.conditions();
  if (!conditions) return false;
  const auto restrictions = conditions->getElementsByTagName("AudienceRestriction");
  return !restrictions.empty() &&
         std::all_of(restrictions.begin(), restrictions.end(), [&](const auto& restriction) {
           const auto audiences = restriction->getElementsByTagName("Audience");
           return std::any_of(audiences.begin(), audiences.end(),
                              [&](const auto& each) { return each->textContent() == audience; });
         });
}

// The subscriber's name, or absent with the reason.
std::optional<std::string> subscriber(const std::string& trusted,
                                      const std::optional<std::string>& audience,
                                      std::string& reason) {
  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  const auto refuse = [&reason](std::string why) {
    reason = std::move(why);
    return std::nullopt;
  };
  if (!controller.schema()) return refuse("the schema is missing, so nothing can be validated");
  std::optional<kestrelink::ErrorInfo> error;
  const auto response = controller.parseResponse(trusted, &error);
  if (!response) {
    return refuse(error ? error->domain + " " + std::to_string(error->code)
                        : "an assertion has no conditions");
  }
  if (response->expectedAction() != kestrelink::SAMLExpectedActionProceed) {
    return refuse("the provider's status is " + response->primaryStatusCode().value_or("absent"));
  }
  // The library asks for one good assertion. Names may come from any of them, so all have to be.
  const auto assertions =
      response->assertions().value_or(kestrelink::SAMLResponseElement::Assertions());
  if (assertions.empty()) return refuse("there is no assertion that can be read");
  for (const auto& assertion : assertions) {
    if (!assertion->meetsConditions() || !assertion->isValid()) {
      return refuse("an assertion does not hold now");
    }
    if (audience && !isFor(*assertion, *audience)) {
      return refuse("an assertion is meant for another audience");
    }
  }
  if (auto name = response->userName()) return name;
  const auto subject = response->subject();
  const auto identifier = subject ? subject->firstElementByTagName("NameID") : nullptr;
  return identifier ? identifier->textContent() : refuse("no subscriber is named");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::fprintf(stderr, "usage: verify_then_read CERTIFICATE.pem ANSWER.xml [AUDIENCE]\n");
    return 2;
  }
  // Not through libxml2, which finds no files once the library has been used.
  const auto certificate = content(argv[1]);
  const auto answer = content(argv[2]);
  if (!certificate || !answer) {
    std::fprintf(stderr, "verify_then_read: cannot read %s\n", certificate ? argv[2] : argv[1]);
    return 2;
  }
  std::string reason;
  const auto audience = argc == 4 ? std::optional<std::string>(argv[3]) : std::nullopt;
  const auto trusted = verify_then_read::verifiedAnswer(*answer, *certificate, reason);
  const auto name = trusted ? subscriber(*trusted, audience, reason) : std::nullopt;
  if (!name) {
    std::printf("refused: %s\n", reason.c_str());
    return 1;
  }
  std::printf("accepted: %s\n", name->c_str());
  return 0;
}
