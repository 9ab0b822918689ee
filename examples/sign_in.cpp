// Signs a subscriber in, and then asks whether they may watch a channel.
//
// The client does what the library does not: it sends, it receives, and it verifies the signature
// of every response before the library reads it (see verify_then_read/). Here the responses are
// files: sign_in RESPONSE [DECISION].

#include <kestrelink/standard/StandardForms.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace ks = kestrelink;

namespace {

// Stands for the client's network: sends the request, receives the response, verifies it.
std::string sendAndVerify(const std::optional<std::string>& request, const char* responseFile) {
  std::cout << "--> " << request.value_or("").substr(0, 60) << "...\n";
  std::ifstream file(responseFile);
  return {std::istreambuf_iterator<char>(file), {}};
}

int giveUp(const std::string& why) {
  std::cout << "not signed in: " << why << "\n";
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return giveUp("no response given");
  const auto& controller = ks::SAMLParserController::sharedInstance();
  if (!controller.schema()) return giveUp("the schema is missing, so nothing would be validated");

  // Ask without a sign-in page first; the response says when the provider must show one.
  const auto request = controller.newAuthNRequest("https://signin.harbour-tv.example");
  request->setIsPassive(true);
  const std::string responseText = sendAndVerify(request->xmlString(), argv[1]);

  std::optional<ks::ErrorInfo> error;
  const auto response = controller.parseResponse(responseText, &error);
  if (!response) return giveUp(std::string(ks::describe(error)));
  if (response->expectedAction() == ks::SAMLExpectedActionPresentUI) {
    return giveUp("show the provider's sign-in page, then ask again without setIsPassive");
  }
  if (response->expectedAction() != ks::SAMLExpectedActionProceed) {
    return giveUp(response->primaryStatusCode().value_or("no status"));
  }
  const auto assertions = response->assertions();
  if (!ks::standard::isSignedIn(*response) || !assertions || assertions->empty() ||
      !assertions->front()->isValidForRequestor("https://signin.harbour-tv.example")) {
    return giveUp("the response is not for this client");
  }

  std::cout << "signed in: " << ks::standard::subscriberOf(*response).value_or("a subscriber")
            << " at " << response->selectedProvider().value_or("an unnamed provider") << "\n";
  for (const auto& [name, values] : response->attributes()) {
    std::cout << "  " << name << ":";
    for (const std::string& value : values) std::cout << " " << value;
    std::cout << "\n";
  }

  // May this subscriber watch? The query names the subscriber by the subject of the response.
  const char* const channel = "https://harbour-tv.example/live";
  const auto query =
      ks::standard::newDecisionQuery(controller, {.resource = channel, .channel = "HARBOUR"});
  if (!ks::standard::setSubjectFrom(*query, *response)) return giveUp("the response names nobody");
  const auto decision =
      controller.parseResponse(sendAndVerify(query->xmlString(), argc > 2 ? argv[2] : argv[1]));
  const auto word = decision ? decision->authorizationStatusForResource(channel) : std::nullopt;
  std::cout << "may watch: " << word.value_or("no decision") << "\n";
  return 0;
}
