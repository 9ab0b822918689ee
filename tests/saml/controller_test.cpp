#include "kestrelink/xml/XMLWrapperElementFactory.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  const std::size_t at = text.find(what);
  return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

TEST(Controller, GoldenVerdicts) {
  const std::string sample = file("tests/fixtures/answer.xml");
  const std::size_t from = sample.find("<saml:Conditions");
  const std::string conditions = sample.substr(from, sample.find("<saml:AuthnStatement") - from);
  const LogCapture log;
  const auto& controller = SAMLParserController::sharedInstance();
  expectCases("tests/golden/cases/messages.txt", [&](const std::string& line) {
    const auto parts = split(line, " | ");
    const StandingClock clock(line.substr(0, 20));
    std::string message = parts[0].substr(std::min<std::size_t>(21, parts[0].size()));
    message = replaced(message, "{sample}", sample);
    message = replaced(message, "{half}", sample.substr(0, sample.size() / 2));
    if (parts.size() == 2) {
      const std::size_t at = parts[1].find(" =>");
      const std::string what = replaced(parts[1].substr(0, at), "{conditions}", conditions);
      message = replaced(message, what, parts[1].substr(std::min(at + 4, parts[1].size())));
    }
    std::optional<ErrorInfo> error, cachedError;
    const auto response = controller.parseResponse(message, &error);
    const auto cached = controller.parseCachedResponse(message, &cachedError);
    EXPECT_EQ(controller.parseResponse(message) != nullptr, response != nullptr);
    return (response ? "accepted" : text(error)) +
           "\ncached: " + (cached ? "accepted" : text(cachedError));
  });
}

// In a process of its own: nobody has read a message before.
TEST(Controller, RegistersTheElementClassesWhenItIsMade) {
  const SAMLParserController controller;
  EXPECT_EQ(XMLWrapperElementFactory::elementClassByTagName("X509Data"),
            &SAMLX509Data::elementClass);
  EXPECT_EQ(XMLWrapperElementFactory::elementClassByTagName("NameID"), nullptr);
}

TEST(Controller, WithoutASchemaAnyWellFormedResponseIsJudged) {
  SAMLParserController controller;
  controller.setSchemaData(nullptr);
  EXPECT_TRUE(controller.parseResponse("<Response/>"));
  EXPECT_FALSE(controller.parseResponse("<Request/>"));
  EXPECT_TRUE(controller.parseCachedResponse("<Request/>"));
}

}  // namespace
}  // namespace kestrelink::testing
