// What the headers of this folder return where there is nothing to read. The rest is in the golden
// cases of responses and requests.

#include "kestrelink/standard/StandardForms.h"

#include "tests/support/Support.h"

namespace kestrelink::standard {
namespace {

using namespace kestrelink::testing;

TEST(Standard, NothingIsFoundWhereNothingIs) {
  const auto message = read("<Other/>");
  EXPECT_EQ(shown(recipientOf(*message), inResponseTo(*message), destinationOf(*message),
                  decisionForResource(*message, "urn:1"), signedElements(*message)),
            "- - - - []");
  EXPECT_EQ(encryptedAssertions(*message) + unreadDates(*message).size(), 0u);
  EXPECT_EQ(elementFromText("no XML"), nullptr);
  const auto logout = SAMLParserController::sharedInstance().newLogoutRequest();
  EXPECT_FALSE(setNameIdFrom(*logout, *root<SAMLSubject>("<Subject/>")));
  const auto subject = root<SAMLSubject>("<Subject><NameID>n</NameID></Subject>");
  EXPECT_TRUE(setNameIdFrom(*logout, *subject));
  EXPECT_FALSE(setNameIdFrom(*SAMLLogoutRequest::initWithElement(nullptr, nullptr), *subject));
  EXPECT_EQ(described(*newNameId("n")),
            "NameID text='n' xmlns:saml=" + std::string(kAssertionNamespace));
  EXPECT_EQ(nameIdOf(*subject)->tagName(), "NameID") << "the response keeps its own";
  EXPECT_FALSE(setNameIdFrom(*logout, *message));
  EXPECT_EQ(nameIdOf(*message), nullptr);
  EXPECT_EQ(subscriberOf(*message), std::nullopt);
  EXPECT_FALSE(isSignedIn(*message));
}

// Prefixes are the caller's own, whatever the message or the process binds them to.
TEST(Standard, XPathPrefixes) {
  const auto message = read(
      "<p:R xmlns:p='urn:p' xmlns:q=\"u'q\" a='0' q:a='1'><q:X/><p:X>one</p:X><p:X>two</p:X>"
      "<p:a.b-c_ä/></p:R>");
  read("<x:x xmlns:x='urn:another'/>");
  struct Row {
    const char *expression, *found;
  };
  for (const auto& [expression, found] : {Row{"/x:R/x:X", "one two"},
                                          {"//x:X[2]", "two"},
                                          {"child::x:X[last()]/self::x:*", "two"},
                                          {"x:*[. = 'x:X']|x:X[.=\"one\"]", "one"},
                                          {"//q:*", "-"},
                                          {"//*[@q:a - 1 = 0]/x:a.b-c_ä", "-"},
                                          {"x:X * 2", "error 301"},
                                          {"x: X", "error 300"},
                                          {"p:X", "error 300"},
                                          {"x:X['", "error 300"}}) {
    std::optional<ErrorInfo> error;
    const auto list = xpath(*message, expression, {{"x", "urn:p"}, {"q", "u'q"}}, &error);
    std::string texts = list ? "" : "error " + std::to_string(error ? error->code : 0);
    for (const auto& each : list.value_or(XMLWrapperElement::List())) {
      texts += (texts.empty() ? "" : " ") + shown(each->textContent());
    }
    EXPECT_EQ(texts, found) << expression;
  }
  EXPECT_EQ(xpath(*message, "x:X", {{"x", "'\""}}), std::nullopt);
}

TEST(Standard, ElementsOfANamespace) {
  const auto element = newElement("Attribute", "saml", kAssertionNamespace);
  EXPECT_NE(std::dynamic_pointer_cast<SAMLAttribute>(element), nullptr);
  for (const char* name : {"a", "b"}) {
    setAttribute(*element, {"saml", "urn:" + std::string(name)}, name, "<");
  }
  setAttribute(*element, {std::nullopt, "urn:b"}, "c", "");
  element->addChildElement(newElement("x", "", "urn:x"));
  EXPECT_EQ(element->xmlString(),
            "<saml:Attribute xmlns:saml=\"urn:oasis:names:tc:SAML:2.0:assertion\" "
            "xmlns:saml_=\"urn:a\" xmlns:saml__=\"urn:b\" xmlns:ns=\"urn:b\" saml_:a=\"&lt;\" "
            "saml__:b=\"&lt;\" ns:c=\"\">\n  <x xmlns=\"urn:x\"/>\n</saml:Attribute>");
  std::string prefixes;
  for (const auto& ns : element->namespaces()) prefixes += shown(ns->prefix()) + " ";
  EXPECT_EQ(prefixes, "saml saml_ saml__ ns ");
  for (const char* name : {"", "1a", "a:b", "a b", "\xC3\x97", "a>"}) {
    EXPECT_EQ(newElement(name, "p", "urn:p"), nullptr) << name;
    EXPECT_EQ(newElement("a", name, "urn:p") == nullptr, *name != 0) << name;
  }
}

}  // namespace
}  // namespace kestrelink::standard
