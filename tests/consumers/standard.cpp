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
  const std::string answer{std::istreambuf_iterator<char>(file), {}};
  const auto& controller = kestrelink::SAMLParserController::sharedInstance();
  const auto response = controller.parseResponse(answer);
  if (!response || !response->subject()) return 1;

  bool fine = true;
  const auto write = [&](auto& request, const std::string& name) {
    standard::setDestination(request, "https://idp.example/saml?a&b");
    const auto made = standard::toStandardForm(request);
    if (made != standard::StandardForm::made) std::cout << standard::reasonOf(made) << "\n";
    std::ofstream(argv[2] + ("/" + name)) << request.xmlString().value_or("") << "\n";
    fine = fine && made == standard::StandardForm::made;
  };

  const auto authn = controller.newAuthNRequest("https://tv.example");
  authn->setProviderName("Harbour");
  standard::setAssertionConsumerService(*authn, "https://tv.example/acs");
  write(*authn, "authn.xml");

  const auto attributes = controller.newAttributeQuery("HARBOUR");
  attributes->setSubjectFromResponse(answer);
  attributes->addAttribute("HouseholdID", {"<1>"});
  write(*attributes, "attributes.xml");

  const auto authz = controller.newAuthZQuery("https://tv.example/live", "HARBOUR");
  authz->requestElement()->setSubject(response->subject());
  authz->addAction(kestrelink::SAMLAuthZDecisionQueryActionPlay);
  write(*authz, "authz.xml");

  const auto logout = controller.newLogoutRequest();
  logout->requestElement()->addChildElement(standard::newNameId("<erin> & co"));
  logout->requestElement()->setSessionIndex("s");
  write(*logout, "logout.xml");

  const auto identifier = standard::nameIdOf(*response->subject());
  fine = fine && identifier && standard::unreadDates(*response).empty() &&
         standard::encryptedAssertions(*response) == 0 &&
         standard::elementFromText("<SubjectLocality/>") != nullptr;
  std::cout << (fine ? "fine" : "wrong") << "\n";
  return fine ? 0 : 1;
}
