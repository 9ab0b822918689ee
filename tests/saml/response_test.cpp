// What is read in a response.

#include <tuple>

#include "kestrelink/xml/XMLWrapperElementFactory.h"

#include "tests/support/Reading.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

TEST(Response, GoldenReadings) {
  expectCases("tests/golden/cases/responses.txt", [](const std::string& xml) {
    std::optional<ErrorInfo> error;
    std::string all;
    for (const int later : {0, 500}) {
      const StandingClock clock("2020-01-01T00:00:00Z", std::chrono::milliseconds(later));
      const auto response = read(xml, &error);
      const std::string reading = fuzz::shown(fuzz::readingOf(*response));
      EXPECT_TRUE(later == 0 || reading == all) << xml << reading;
      EXPECT_EQ(response->responseElement() == nullptr, error.has_value());
      all = reading;
    }
    return all + (error ? "error: " + text(error) + " " + error->info.at("recievedClass") : "");
  });
}

// Without the controller, in a process of its own.
TEST(Response, NeedsNoController) {
  EXPECT_TRUE(SAMLResponse::initWithData(bytes("<Response/>"), nullptr)->responseElement());
}

struct RefusedSignature : SAMLSignature {
  bool isValid() const override { return false; }
};

struct SilentlyInvalid : SAMLAssertion {
  bool isValid(ErrorOut /*error*/) const override { return false; }
};

// A class of the client's own, or of a later version, is heeded.
TEST(Response, ClassesThatSayNo) {
  static const XMLWrapperElementClass silent("Silent", &makeElementInstance<SilentlyInvalid>);
  static const XMLWrapperElementClass refused("Refused", &makeElementInstance<RefusedSignature>);
  SAMLParserController::sharedInstance();
  using Factory = XMLWrapperElementFactory;
  const std::tuple<const XMLWrapperElementClass*, const char*, std::string, const char*> rows[] = {
      {&silent, "Assertion", "<Assertion/>", "SAMLParserErrorDomain 400"},
      {&refused, "Signature", "<Signature/>", "SAMLParserErrorDomain 500"},
      {&refused, "Signature", "<Assertion><Signature/></Assertion>", "SAMLParserErrorDomain 500"}};
  for (const auto& [own, name, content, expected] : rows) {
    const XMLWrapperElementClass* const usual = Factory::elementClassByTagName(name);
    Factory::registerClass(own, name);
    const auto response = read("<Response>" + content + "</Response>");
    Factory::registerClass(usual, name);
    std::optional<ErrorInfo> error;
    EXPECT_FALSE(response->isValid(&error)) << content;
    EXPECT_EQ(text(error), expected) << content;
  }
}

}  // namespace
}  // namespace kestrelink::testing
