// What a response answers, over inline XML and with the clock at 2020-01-01T00:00:00Z.

#include <tuple>

#include "kestrelink/saml/elements/SAMLNames.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

using Texts = std::vector<std::string>;

const std::string kGood = "<Conditions NotOnOrAfter='2021-01-01T00:00:00Z'/>";
const std::string kBad = "<Conditions NotOnOrAfter='2019-01-01T00:00:00Z'/>";
const std::string kHolds =
    "<AuthnStatement SessionNotOnOrAfter='2021-01-01T00:00:00Z' SessionIndex='s1'/>";
const std::string kEnded =
    "<AuthnStatement SessionNotOnOrAfter='2019-01-01T00:00:00Z' SessionIndex='s0'/>";

std::string assertion(const std::string& content) {
  return "<Assertion>" + content + "</Assertion>";
}

// The verdicts and the error each leaves in a slot that held "before 1".
TEST(Response, VerdictsAndTheErrorSlot) {
  const StandingClock clock("2020-01-01T00:00:00Z");
  struct Row {
    std::string assertions;
    bool meets;
    const char* meetsError;
    bool valid;
    const char* validError;
  };
  const Row rows[] = {
      {"", true, "before 1", true, "before 1"},
      {assertion(kGood), true, "none", true, "before 1"},
      {assertion(kBad), false, "SAMLParserErrorDomain 401", true, "before 1"},
      {assertion(""), false, "none", true, "before 1"},
      {assertion(kBad) + assertion(kGood), true, "SAMLParserErrorDomain 401", true, "before 1"},
      {assertion(kGood) + assertion(kBad), true, "none", true, "before 1"},
      {assertion(kBad) + assertion(""), false, "SAMLParserErrorDomain 401", true, "before 1"},
      {assertion(kGood + kEnded), true, "none", false, "SAMLParserErrorDomain 401"},
      {assertion(kGood + kEnded) + assertion(kHolds), true, "none", true, "before 1"},
      {"<Signature/>" + assertion("<Signature/>" + kGood + kHolds), true, "none", true, "before 1"},
  };
  for (const Row& row : rows) {
    const auto response = read("<Response>" + row.assertions + "</Response>");
    std::optional<ErrorInfo> error = ErrorInfo{"before", 1, {}};
    EXPECT_EQ(response->assertionMeetsConditions(&error), row.meets) << row.assertions;
    EXPECT_EQ(text(error), row.meetsError) << row.assertions;
    error = ErrorInfo{"before", 1, {}};
    EXPECT_EQ(response->isValid(&error), row.valid) << row.assertions;
    EXPECT_EQ(text(error), row.validError) << row.assertions;
    EXPECT_EQ(response->assertionMeetsConditions(), row.meets);
    EXPECT_EQ(response->isValid(), row.valid);
  }
  EXPECT_FALSE(read("<Response>" + assertion(kGood) + "</Response>")->hasValidAuthentication());
}

// Without the controller, in a process of its own.
TEST(Response, NeedsNoController) {
  EXPECT_TRUE(SAMLResponse::initWithData(bytes("<Response/>"), nullptr)->responseElement());
}

TEST(Response, RootsThatAreNone) {
  std::optional<ErrorInfo> error;
  const auto other = read("<Assertion><Issuer>i</Issuer></Assertion>", &error);
  ASSERT_TRUE(other);
  EXPECT_EQ(text(error), "SAMLParserErrorDomain 102");
  EXPECT_EQ(error->info.at("recievedClass"), "SAMLAssertion");
  EXPECT_FALSE(other->assertionMeetsConditions(&error));
  EXPECT_EQ(text(error), "SAMLParserErrorDomain 102");
  EXPECT_TRUE(other->isValid(&error));
  EXPECT_TRUE(other->attributes().empty());
  EXPECT_EQ(shown(other->responseElement(), other->assertions(), other->selectedProvider(),
                  other->statusCodes(), other->subject(), other->authenticationTTL(),
                  other->hasValidAuthentication()),
            "- - i [] - - 0");
}

TEST(Response, ALogoutResponseHasNoAssertions) {
  const auto logout =
      read("<LogoutResponse><Issuer>i</Issuer>" + assertion(kBad + kEnded) + "</LogoutResponse>");
  EXPECT_TRUE(logout->attributes().empty());
  EXPECT_EQ(shown(logout->assertions(), logout->assertionMeetsConditions(), logout->isValid(),
                  logout->authenticationTTL(), logout->selectedProvider()),
            "- 1 1 - i");
}

TEST(Response, AttributesAreThoseOfTheFirstAssertion) {
  const auto response = read(
      "<Response>" +
      assertion("<AttributeStatement><Attribute Name='a'><AttributeValue>1</AttributeValue>"
                "</Attribute><Attribute><AttributeValue>nameless</AttributeValue></Attribute>"
                "<Attribute Name='userID'><AttributeValue>no</AttributeValue></Attribute>"
                "<Attribute Name='a'><AttributeValue>2</AttributeValue>"
                "<AttributeValue>3</AttributeValue></Attribute><Attribute Name='username'/>"
                "</AttributeStatement>") +
      assertion("<AttributeStatement><Attribute Name='b'/></AttributeStatement>") + "</Response>");
  const SAMLResponse::AttributeValues expected = {
      {"a", {"2", "3"}}, {"userID", {"no"}}, {"username", {}}};
  EXPECT_EQ(response->attributes(), expected);
  EXPECT_EQ(shown(response->attributeValuesForName("a"), response->attributeValuesForName("A"),
                  response->userName()),
            "[2 3] - -");
}

TEST(Response, StatusSaysWhatToDoNext) {
  const std::string success(kSAMLStatusCodeSuccess), responder(kSAMLStatusCodeResponderError),
      requester(kSAMLStatusCodeRequestorError), passive(kSAMLStatusCodeNoPassive),
      ui(kSAMLStatusCodeMSORequestsUI), denied(kSAMLStatusCodeRequestDenied);
  const std::pair<Texts, SAMLExpectedAction> rows[] = {
      {{}, SAMLExpectedActionNone},
      {{success}, SAMLExpectedActionProceed},
      {{success, passive}, SAMLExpectedActionProceed},
      {{responder}, SAMLExpectedActionNone},
      {{responder, passive}, SAMLExpectedActionPresentUI},
      {{responder, ui}, SAMLExpectedActionPresentUI},
      {{responder, ui, denied}, SAMLExpectedActionPresentUI},
      {{responder, denied, ui}, SAMLExpectedActionNone},
      {{requester, passive}, SAMLExpectedActionNone},
      {{passive}, SAMLExpectedActionNone},
      {{"urn:norvane:status:msorequestsui"}, SAMLExpectedActionNone},
  };
  for (const auto& [codes, action] : rows) {
    std::string status;
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) {
      status = "<StatusCode Value='" + *code + "'>" + status + "</StatusCode>";
    }
    const auto response = read("<Response><Status>" + status + "</Status></Response>");
    EXPECT_EQ(response->statusCodes(), codes);
    EXPECT_EQ(response->expectedAction(), action) << status;
    EXPECT_EQ(response->primaryStatusCode().has_value(), !codes.empty());
  }

  // A code without a value ends the list: what is nested in it must not read as "proceed".
  for (const auto none : {"", " Value='&e;'"}) {
    const auto response = read(
        "<!DOCTYPE Response [<!ENTITY e 'x'>]><Response><Status><StatusCode" + std::string(none) +
        "><StatusCode Value='" + success + "'/></StatusCode></Status></Response>");
    EXPECT_EQ(response->statusCodes(), Texts()) << none;
    EXPECT_EQ(response->expectedAction(), SAMLExpectedActionNone) << none;
  }
}

TEST(Response, DecisionsForAResource) {
  const std::string statement = "<AuthzDecisiontStatement Resource='";
  const auto response =
      read("<Response>" + assertion(statement + "https://tv.example/1'/>") +
           assertion(statement + "https://tv.example/1' Decision='Permit'/>" + statement +
                     "https://tv.example/1' Decision='Deny'/>" + statement +
                     "https://tv.example/2' Decision='Indeterminate'/>") +
           assertion(statement + "https://tv.example/2' Decision='Deny'/>" + statement +
                     "/{id}|\u00FC x[]=1' Decision='Deny'/>") +
           "</Response>");
  EXPECT_EQ(response->authorizationStatusForResource("https://tv.example/1"), "Permit");
  EXPECT_EQ(response->authorizationStatusForResource("https://tv.example/2"), "Indeterminate");
  EXPECT_EQ(response->authorizationStatusForResource("/{id}|\u00FC x[]=1"), "Deny");
  for (const auto none : {"https://tv.example/3", "https://TV.example/1", "not a URL", ""}) {
    EXPECT_EQ(response->authorizationStatusForResource(none), std::nullopt) << none;
  }
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
      {&silent, "Assertion", assertion(""), "SAMLParserErrorDomain 400"},
      {&refused, "Signature", "<Signature/>", "SAMLParserErrorDomain 500"},
      {&refused, "Signature", assertion("<Signature/>"), "SAMLParserErrorDomain 500"}};
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
