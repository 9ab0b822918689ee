// A client of a provider that validates what it is sent: it writes the four requests in their
// standard form into files, for a validator that is not this library.

#include <kestrelink/standard/StandardForms.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace standard = kestrelink::standard;

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::ifstream file(argv[1]);
  const std::string message{std::istreambuf_iterator<char>(file), {}};
  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  const auto write = [&](const auto& request, const std::string& name) {
    const auto made = standard::toStandardForm(*request);
    if (made != standard::StandardForm::made) std::cout << standard::reasonOf(made) << "\n";
    std::ofstream(argv[2] + ("/" + name)) << request->xmlString().value_or("") << "\n";
  };
  const auto authn = controller.newAuthNRequest("https://tv.example");
  standard::setAssertionConsumerService(*authn, "https://tv.example/acs");
  write(authn, "authn.xml");
  const auto attributes = controller.newAttributeQuery("HARBOUR");
  attributes->setSubjectFromResponse(message);
  write(attributes, "attributes.xml");
  const auto authz = controller.newAuthZQuery("https://tv.example/live", "HARBOUR");
  authz->setSubjectFromResponse(message);
  authz->addAction(kestrelink::SAMLAuthZDecisionQueryActionPlay);
  write(authz, "authz.xml");
  const auto logout = controller.newLogoutRequest();
  logout->requestElement()->addChildElement(standard::newNameId("<erin> & co"));
  write(logout, "logout.xml");
  const auto response = controller.parseResponse(message);
  return response && standard::unreadDates(*response).empty() ? 0 : 1;
}
