#include "kestrelink/xml/XMLWrapperElementFactory.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

const std::string kSample = file("tests/fixtures/answer.xml");

std::string replaced(std::string text, std::string_view what, std::string_view with) {
  return text.replace(text.find(what), what.size(), with);
}

TEST(Controller, AcceptsAndRejects) {
  struct Row {
    const char* now;
    std::string text;
    const char* verdict;        // "accepted", or the error of parseResponse
    const char* cachedVerdict;  // of parseCachedResponse
  };
  const std::string& good = kSample;
  const char* const kAccepted = "accepted";
  const char* const kInside = "2026-06-01T00:00:00Z";
  const char* const kSchema = "XMLWrapperErrorDomain 100";
  const char* const kNoText = "SAMLParserErrorDomain 100";
  const char* const kExpired = "SAMLParserErrorDomain 401";
  const std::size_t from = good.find("<saml:Conditions"), to = good.find("<saml:AuthnStatement");
  const std::string noConditions = replaced(good, good.substr(from, to - from), "");
  const Row rows[] = {
      {kInside, good, kAccepted, kAccepted},
      {"2026-01-15T20:14:02Z", good, kAccepted, kAccepted},
      {"2026-01-15T20:14:01Z", good, kExpired, kAccepted},
      {"2096-01-15T20:20:01Z", good, kAccepted, kAccepted},
      {"2096-01-15T20:20:02Z", good, kExpired, kAccepted},
      {"2096-02-14T20:15:01Z", good, kExpired, kExpired},
      {kInside, noConditions, "none", kAccepted},
      {kInside, replaced(good, "Version=\"2.0\"", ""), kSchema, kSchema},
      {kInside, good + "<!-- cut", kAccepted, kAccepted},  // recovered, and the rest is valid
      {kInside, good.substr(0, good.size() / 2), kSchema, kSchema},
      {kInside, "\xEF\xBB\xBF" + good, kAccepted, kAccepted},
      {kInside, "\xFF\xFE<\x00", kNoText, kNoText},
      {kInside, replaced(good, "mara", "m\xC0\x80"), kNoText, kNoText},
      {kInside, "", "XMLWrapperErrorDomain 200", "XMLWrapperErrorDomain 200"},
      {kInside, std::string("<a>\0</a>", 8), kSchema, kSchema},
  };
  const LogCapture log;
  const auto& controller = SAMLParserController::sharedInstance();
  for (const Row& row : rows) {
    const StandingClock clock(row.now);
    std::optional<ErrorInfo> error;
    const bool accepted = controller.parseResponse(row.text, &error) != nullptr;
    EXPECT_EQ(accepted ? "accepted" : text(error), row.verdict) << row.now << row.text;
    error.reset();
    const bool kept = controller.parseCachedResponse(row.text, &error) != nullptr;
    EXPECT_EQ(kept ? "accepted" : text(error), row.cachedVerdict) << row.now << row.text;
    EXPECT_EQ(controller.parseResponse(row.text) != nullptr, accepted);
  }
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
