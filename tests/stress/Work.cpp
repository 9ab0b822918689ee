#include "tests/stress/Work.h"

#include "tests/support/Reading.h"
#include "tests/support/Shown.h"

namespace stress {

using namespace kestrelink;

std::string none(const std::optional<ErrorInfo>& error) {
  return error ? "none " + kestrelink::testing::shown(error) : "none";
}

std::string textOf(const std::shared_ptr<SAMLResponse>& response,
                   const std::optional<ErrorInfo>& error) {
  if (!response) return none(error);
  return response->xmlString().value() + fuzz::shown(fuzz::readingOf(*response));
}

std::string requests(const std::string& response) {
  std::string all, missing;
  const auto write = [&](const auto& request) {
    for (const char* const changing : {"ID", "IssueInstant"}) {
      request->requestElement()->setAttributeWithName(changing, "x");
    }
    std::optional<ErrorInfo> error;
    const auto text = request->xmlString(&error);
    (text ? all : missing) += text ? *text : none(error);
  };
  const auto& controller = SAMLParserController::sharedInstance();
  const auto authn = controller.newAuthNRequest("https://tv.example");
  authn->setIsPassive(true);
  authn->requestElement()->setDestination("https://idp.example/sso?a=1&b=<2>");
  authn->requestElement()->setScoping(SAMLScoping::createElement());
  authn->requestElement()->scoping()->addRequesterId("line\nbreak");
  authn->setSubjectFromResponse(response);
  write(authn);
  const auto attributes = controller.newAttributeQuery("HARBOUR");
  attributes->addAttribute("PostalCodes", {"55802", "55804"});
  attributes->setSubjectFromResponse(response);
  write(attributes);
  const auto authz = controller.newAuthZQuery("https://tv.example/live", "HARBOUR");
  authz->addAction(SAMLAuthZDecisionQueryActionPlay);
  write(authz);
  const auto logout = controller.newLogoutRequest();
  logout->setNotOnOrAfter(SAMLDateFromString("2030-01-01T00:00:00Z"));
  write(logout);
  return missing.empty() ? all : missing;
}

}  // namespace stress
