// Ends the session that a response began: sign_out RESPONSE. Prints the logout request.
#include <kestrelink/standard/StandardForms.h>

#include <fstream>
#include <iostream>
#include <iterator>

namespace ks = kestrelink;

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::ifstream file(argv[1]);
  const std::string text{std::istreambuf_iterator<char>(file), {}};

  const auto& controller = ks::SAMLParserController::sharedInstance();
  const auto response = controller.parseCachedResponse(text);
  const auto request = controller.newLogoutRequest();
  request->setIssuer("https://signin.harbour-tv.example");
  if (!response || !ks::standard::setNameIdFrom(*request, *response)) {
    std::cout << "the response names nobody\n";
    return 1;
  }
  if (const auto session = response->authenticationSessionId()) {
    ks::standard::setSessionIndex(*request, *session);
  }
  const auto made = ks::standard::toStandardForm(*request);
  if (made != ks::standard::StandardForm::made) {
    std::cout << ks::standard::reasonOf(made) << "\n";
    return 1;
  }
  std::cout << request->xmlString().value_or("not written") << "\n";
}
