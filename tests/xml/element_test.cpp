#include <libxml/tree.h>

#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/libxml/DetachedNode.h"
#include "kestrelink/xml/libxml/LibxmlDump.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

using Element = XMLWrapperElement;

std::shared_ptr<Element> made(std::string_view tagName) {
  return Element::initWithTagName(tagName);
}

TEST(ElementReading, Text) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"<r/>", std::nullopt},
      {"<r></r>", std::nullopt},
      {"<r> \n\t&#xA0;&#x3000;</r>", std::nullopt},
      {"<r>  a  </r>", "a"},
      {"<r> a <c/> b </r>", "ab"},
      {"<r>a<!-- x -->b</r>", "ab"},
      {"<r>a<?x y?> b</r>", "ab"},
      {"<r>a<![CDATA[cut]]>b</r>", "ab"},
      {"<r><![CDATA[cut]]></r>", std::nullopt},
      {"<!DOCTYPE r [<!ENTITY e 'cut'>]><r>a&e;b</r>", "ab"},
      {"<r>a&amp;b&#x41;</r>", "a&bA"},
      {"<r><c>deep</c></r>", std::nullopt},
      {"<r>\xE9</r>", fuzz::notUtf8()},  // what libxml2 recovers as it is, is no text
      {"<r>a<c/>\xE9<c/>b</r>", "a" + fuzz::notUtf8().value_or("") + "b"},
  };
  for (const auto& [xml, expected] : rows) EXPECT_EQ(root(xml)->textContent(), expected) << xml;
}

TEST(ElementReading, AttributeValueIsTheFirstTextAlone) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"<r a='x'/>", "x"},
      {"<r a=''/>", ""},
      {"<r a=' x '/>", " x "},
      {"<r a='x&lt;y'/>", "x<y"},
      {"<!DOCTYPE r [<!ENTITY e 'E'>]><r a='x&e;y'/>", "x"},
      {"<!DOCTYPE r [<!ENTITY e 'E'>]><r a='&e;y'/>", std::nullopt},
  };
  for (const auto& [xml, expected] : rows) {
    const auto attribute = root(xml)->attributeWithName("a");
    ASSERT_TRUE(attribute) << xml;
    EXPECT_EQ(attribute->value(), expected) << xml;
  }
}

TEST(ElementReading, AttributesAreKeyedByLocalName) {
  const auto element = root("<r xmlns:p='urn:p' a='plain' p:a='prefixed' b='2'/>");
  EXPECT_EQ(element->attributes().size(), 2u);
  const auto attribute = element->attributeWithName("a");
  EXPECT_EQ(shown(attribute->value(), attribute->ns()->prefix(), attribute->ns()->href()),
            "prefixed p urn:p");
  EXPECT_EQ(element->attributeWithName("b")->ns(), nullptr);
  EXPECT_EQ(element->attributeWithName("p:a"), nullptr);

  std::string many = "<r xmlns:p='urn:p'";
  for (int n = 0; n < 40; ++n) many += " a" + std::to_string(n) + "='1'";
  const auto wide = root(many + " p:a3='2' p:a30='3' p:a30x='4' \xE9='5'/>");
  EXPECT_EQ(wide->attributes().size(), 41u);
  EXPECT_EQ(wide->attributes()[3].second->value(), "2");
  EXPECT_EQ(wide->attributes()[30].second->value(), "3");
  EXPECT_EQ(root("<r a='\xE9'/>")->attributeWithName("a")->value(), fuzz::notUtf8());

  const auto typed = root("<!DOCTYPE r [<!ATTLIST r i ID #IMPLIED>]><r i='x' j='y'/>");
  EXPECT_EQ(typed->attributeWithName("i")->type(), 2);
  EXPECT_EQ(typed->attributeWithName("j")->type(), 0);
}

TEST(ElementReading, NamespacesAreTheOwnOneAndThoseDeclaredAfterIt) {
  const auto recorded = [](const std::shared_ptr<Element>& element) {
    std::string text;
    for (std::size_t at = 0; at < element->namespaces().size(); ++at) {
      const auto& ns = element->namespaces().at(at);
      text += ns->prefix().value_or("(default)") + "=" + ns->href().value_or("") + " ";
    }
    return text;
  };
  const char* const three = "xmlns:a='urn:a' xmlns:b='urn:b' xmlns:c='urn:c'";
  const std::pair<std::string, std::string> rows[] = {
      {std::string("<a:r ") + three + "/>", "a=urn:a b=urn:b c=urn:c "},
      {std::string("<b:r ") + three + "/>", "b=urn:b c=urn:c "},
      {std::string("<r ") + three + "/>", ""},
      {"<r xmlns='urn:d'/>", "(default)=urn:d "},
      {"<r xmlns:a='urn:a' xmlns='urn:d' xmlns:b='urn:b'/>", "(default)=urn:d b=urn:b "},
  };
  for (const auto& [xml, expected] : rows) EXPECT_EQ(recorded(root(xml)), expected) << xml;

  // A child records the namespace records of where its own was declared, and keeps its own copy.
  const auto parent = root(std::string("<b:r ") + three + "><a:x/><c:y xmlns:d='urn:d'/></b:r>");
  EXPECT_EQ(recorded(parent->elements()[0]), "a=urn:a b=urn:b c=urn:c ");
  EXPECT_EQ(recorded(parent->elements()[1]), "c=urn:c ");
  parent->elements()[0]->setNamespace(
      std::make_shared<XMLWrapperNamespace>(std::string("b"), std::string("urn:new")));
  parent->elements()[0]->setNamespace(SAMLAssertionNamespace());
  EXPECT_EQ(recorded(parent->elements()[0]),
            "a=urn:a b=urn:new c=urn:c saml=urn:oasis:names:tc:SAML:2.0:assertion ");
  EXPECT_EQ(recorded(parent), "b=urn:b c=urn:c ");
}

TEST(ElementReading, ClassesComeFromTheLocalName) {
  const auto all = root(
      "<all xmlns:x='urn:x'><x:Response/><response/><Evidence/><NameID/><AuthzDecisionStatement/>"
      "<DefaultElementClass/></all>");
  EXPECT_EQ(all->elements()[0]->dynamicClass().name(), "SAMLResponseElement");
  for (std::size_t other = 1; other < all->elements().size(); ++other) {
    EXPECT_EQ(all->elements()[other]->dynamicClass().name(), "XMLWrapperElement") << other;
  }
}

// In a process of its own: nobody has asked the factory before.
TEST(ElementFactory, KnowsThePlainClassFromTheStart) {
  EXPECT_EQ(XMLWrapperElementFactory::elementClassByTagName("DefaultElementClass"),
            &XMLWrapperElement::elementClass);
}

struct Ordered : XMLWrapperElement {
  Ordered() { setChildElementSequence({{"b", "a"}}); }
};

TEST(ElementReading, AClassMayHaveAnOrderBeforeItIsRead) {
  static const XMLWrapperElementClass ordered("Ordered", &makeElementInstance<Ordered>);
  XMLWrapperElementFactory::registerClass(&ordered, "Ordered");
  const auto doc = read("<o:Ordered xmlns:o='urn:ordered'><a/><b/></o:Ordered>");
  const auto element = doc->documentElement();
  EXPECT_EQ(element->tagName(), "Ordered");
  EXPECT_EQ(element->getResultsByXpathQuery("a")->size(), 1u);
  EXPECT_EQ(element->xmlString(),
            "<o:Ordered xmlns:o=\"urn:ordered\">\n  <b/>\n  <a/>\n</o:Ordered>");
}

TEST(ElementFactory, Registration) {
  using Factory = XMLWrapperElementFactory;
  Factory::registerClass(&SAMLStatus::elementClass, "");
  Factory::registerClass(nullptr, "Test");
  EXPECT_EQ(Factory::elementClassByTagName(""), nullptr);
  EXPECT_EQ(Factory::elementClassByTagName("Test"), nullptr);
  Factory::registerClass(&SAMLStatus::elementClass, "Test");
  Factory::registerClass(&SAMLSubject::elementClass, "Test");
  EXPECT_EQ(Factory::elementClassByTagName("Test"), &SAMLSubject::elementClass);
  EXPECT_EQ(Factory::elementTypeByTagName("Test"), 0u);
}

TEST(ElementTree, LooksUpDirectChildren) {
  const auto element = root("<r xmlns:p='urn:p'><p:a/><b><a/></b><a/><A/></r>");
  EXPECT_EQ(element->getElementsByTagName("a").size(), 2u);
  EXPECT_EQ(element->firstElementByTagName("a"), element->elements()[0]);
  EXPECT_TRUE(element->getElementsByTagName("p:a").empty());
  EXPECT_EQ(element->firstElementByTagName("c"), nullptr);
}

TEST(ElementTree, Changes) {
  const auto parent = made("p");
  const auto a = made("a"), b = made("b"), c = made("c"), d = made("d");
  parent->addChildElement(a);
  parent->addChildElement(a);
  parent->addChildElement(nullptr);
  parent->addChildElement(b, a);
  parent->addChildElement(c, nullptr);
  parent->addChildElement(d, made("stranger"));
  parent->addChildElement(d, a);
  EXPECT_EQ(shown(parent->elements()), "[<b> <a> <c> <d>]");

  parent->replaceChildElement(a, c);
  parent->replaceChildElement(a, nullptr);
  parent->replaceChildElement(made("stranger"), made("e"));
  EXPECT_EQ(shown(parent->elements()), "[<b> <a> <c> <d>]");
  parent->replaceChildElement(a, made("e"));
  parent->removeChildElement(d);
  parent->removeChildElement(parent->elements().front());
  parent->removeChildElement(a);
  EXPECT_EQ(shown(parent->elements()), "[<e> <c>]");
}

TEST(ElementTree, RefusesToHoldItself) {
  const LogCapture log;
  const auto top = made("top"), middle = made("middle"), bottom = made("bottom");
  top->addChildElement(middle);
  middle->addChildElement(bottom);
  bottom->addChildElement(bottom);
  bottom->addChildElement(top);
  bottom->setElements({top, made("fine")});
  middle->replaceChildElement(bottom, top);
  EXPECT_EQ(shown(bottom->elements()), "[<fine>]");
  EXPECT_EQ(LogCapture::lines().size(), 4u);
  EXPECT_EQ(top->xmlString(),
            "<top>\n  <middle>\n    <bottom>\n      <fine/>\n    </bottom>\n  </middle>\n</top>");
}

// Each would take minutes if everything below an element were looked at for every child.
TEST(ElementTree, ChecksForCyclesInLittleTime) {
  std::shared_ptr<Element> top = made("bottom");
  const auto bottom = top;
  for (int level = 0; level < 200000; ++level) {
    const auto above = made("c");
    above->addChildElement(top);
    top = above;
  }
  const LogCapture log;
  bottom->addChildElement(top);
  EXPECT_EQ(LogCapture::lines().size(), 1u);

  std::vector<std::shared_ptr<Element>> pair = {made("x"), made("y")};
  const auto shared = pair[0];
  for (int level = 0; level < 64; ++level) {
    const std::vector<std::shared_ptr<Element>> above = {made("x"), made("y")};
    for (const auto& element : above) element->setElements(pair);
    pair = above;
  }
  shared->addChildElement(pair[0]);
  shared->addChildElement(made("fine"));
  EXPECT_EQ(shown(shared->elements()), "[<fine>]");
}

TEST(ElementWriting, ChildrenFollowTheSequenceForGood) {
  const auto parent = made("p");
  for (const auto name : {"c", "a", "x", "b", "a"}) parent->addChildElement(made(name));
  parent->setChildElementSequence({{"a", "b", "c", "missing"}});
  EXPECT_EQ(parent->xmlString(), "<p>\n  <a/>\n  <a/>\n  <b/>\n  <c/>\n</p>");
  EXPECT_EQ(shown(parent->elements()), "[<a> <a> <b> <c>]");
  parent->setChildElementSequence({{"b", "b"}});
  parent->reorderChildElements();
  EXPECT_EQ(shown(parent->elements()), "[<b> <b>]");
  parent->setChildElementSequence(std::vector<std::string>());
  EXPECT_EQ(parent->xmlString(), "<p/>");
  EXPECT_EQ(made("bare")->xmlString(), "<bare/>");
}

TEST(ElementWriting, WhatWasReadIsWrittenBack) {
  const std::pair<const char*, const char*> rows[] = {
      {"<r xmlns='urn:d'><c/></r>", "<r xmlns=\"urn:d\">\n  <c xmlns=\"urn:d\"/>\n</r>"},
      {"<p:r xmlns:p='urn:p' a='1' b='&lt;&quot;&#10;'/>",
       "<p:r xmlns:p=\"urn:p\" a=\"1\" b=\"&lt;&quot;&#10;\"/>"},
      {"<r><c/> tail </r>", "<r>tail<c/></r>"},
      {"<r>a&lt;b</r>", "<r>a&lt;b</r>"},
      // A prefixed attribute keeps its prefix; its namespace is not declared on the element.
      {"<r xmlns:p='urn:p' p:a='1'/>", "<r p:a=\"1\"/>"},
  };
  for (const auto& [xml, expected] : rows) {
    EXPECT_EQ(root(xml)->xmlString(), expected);
    EXPECT_EQ(root(xml)->xmlString(), expected) << "written twice";
  }
}

TEST(ElementWriting, NamespacesAndAttributesThatLibxmlRefuses) {
  const DetachedNode node(XmlNodeOwner(xmlNewNode(nullptr, BAD_CAST "r")));
  const auto ns = SAMLAssertionNamespace();
  std::optional<ErrorInfo> error;
  EXPECT_NE(ns->xmlNsForNode(node.get(), &error), nullptr);
  EXPECT_EQ(text(error), "none");
  EXPECT_EQ(ns->xmlNsForNode(node.get(), &error), nullptr);
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 205");

  // The prefix "xml" cannot be declared: the attribute is written without it, the error stays.
  const auto element = root("<r xml:lang='sv'/>");
  error.reset();
  EXPECT_EQ(element->xmlString(&error), "<r lang=\"sv\"/>");
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 205");

  const auto withoutValue = made("r");
  withoutValue->setAttributeWithName("a", std::nullopt);
  EXPECT_EQ(withoutValue->attributeWithName("a")->value(), std::nullopt);
  EXPECT_EQ(withoutValue->xmlString(), "<r a=\"\"/>");
}

TEST(ElementWriting, NamesOfNamespacesAreWrittenWellFormed) {
  for (const auto& [name, written] : std::map<std::string, std::string>{
           {"u:a&b", "u:a&amp;b"},
           {"u:&e;<", "u:&amp;e;&lt;"},
           {"u:&amp;&#38;",
            libxmlEscapesNamespaceNames() ? "u:&amp;amp;&amp;#38;" : "u:&amp;&#38;"},
           {"&#;&#x;&#x110000;&#0;&#xD800;&",
            "&amp;#;&amp;#x;&amp;#x110000;&amp;#0;&amp;#xD800;&amp;"}}) {
    const auto element = made("e");
    element->setNamespace(std::make_shared<XMLWrapperNamespace>(std::nullopt, name));
    EXPECT_EQ(element->xmlString(), "<e xmlns=\"" + written + "\"/>");
  }
}

TEST(ElementWriting, NamesEndWhereXmlSaysTheyDo) {
  // The first and last of each range of XML 1.0, productions 4 and 4a, and their neighbours.
  const std::string starts[] = {"A",      "Z",      "a",      "z",          "_",         "\u00C0",
                                "\u00D6", "\u00D8", "\u00F6", "\u00F8",     "\u02FF",    "\u0370",
                                "\u037D", "\u037F", "\u1FFF", "\u200C",     "\u200D",    "\u2070",
                                "\u218F", "\u2C00", "\u2FEF", "\u3001",     "\uD7FF",    "\uF900",
                                "\uFDCF", "\uFDF0", "\uFFFD", "\U00010000", "\U000EFFFF"};
  const std::string parts[] = {"-",      ".",      "0",      "9",     "\u00B7",
                               "\u0300", "\u036F", "\u203F", "\u2040"};
  const std::string never[] = {"@",          "[",      "`",      "{",      "/",      ",",
                               ";",          "\u00BF", "\u00D7", "\u00F7", "\u037E", "\u2000",
                               "\u200B",     "\u200E", "\u206F", "\u2190", "\u2BFF", "\u2FF0",
                               "\u3000",     "\uE000", "\uF8FF", "\uFDD0", "\uFDEF", "\uFFFE",
                               "\U000F0000", "\u00B6", "\u00B8", "\u203E", "\u2041"};
  for (const std::string& name : starts)
    EXPECT_TRUE(isXmlName(name) && isXmlName("a" + name)) << name;
  for (const std::string& name : parts)
    EXPECT_TRUE(!isXmlName(name) && isXmlName("a" + name)) << name;
  for (const std::string& name : never)
    EXPECT_FALSE(isXmlName(name) || isXmlName("a" + name)) << name;
  EXPECT_TRUE(isXmlName("a:b") && isXmlName(":") && !isXmlNCName("a:b"));
}

TEST(ElementLifetime, ElementsOutliveTheirDocument) {
  auto doc = read("<p:r xmlns:p='urn:p' p:a='1'><p:c>text</p:c></p:r>");
  const auto element = doc->documentElement();
  const auto found = doc->firstResultByXpathQuery("p:c");
  EXPECT_TRUE(element->getResultsByXpathQuery("p:c"));
  doc.reset();
  EXPECT_EQ(element->elements()[0]->textContent(), "text");
  EXPECT_EQ(element->xmlString(),
            "<p:r xmlns:p=\"urn:p\" p:a=\"1\">\n  <p:c xmlns:p=\"urn:p\">text</p:c>\n</p:r>");
  EXPECT_EQ(found->textContent(), "text");
  EXPECT_EQ(element->getResultsByXpathQuery("p:c"), std::nullopt);
  EXPECT_EQ(found->firstResultByXpathQuery("."), nullptr);
}

// What a caller may hold while it changes the element that it came from.
TEST(ElementLifetime, WhatIsGivenBackToItsOwner) {
  const auto doc = read("<p:r xmlns:p='urn:p' a='1'><b><c/></b><d/></p:r>");
  const auto element = doc->documentElement();
  element->setNamespace(element->namespaces().at(0));
  element->setNamespace(element->namespaces().at(0));
  element->replaceChildElement(element->elements()[0], element->elements()[0]->elements()[0]);
  EXPECT_EQ(shown(element->elements()), "[<c> <d>]");
  element->setAttributeWithName(*element->attributes()[0].second->value(),
                                element->attributes()[0].first);
  element->setTagName(element->tagName());
  for (const auto& child : Element::List(element->elements())) element->removeChildElement(child);
  EXPECT_EQ(element->attributes().size(), 2u);
}

TEST(ElementLifetime, AnyDepthIsTakenApart) {
  auto top = made("top");
  const auto kept = made("kept");
  std::shared_ptr<Element> bottom = top;
  for (int level = 0; level < 200000; ++level) {
    const auto next = made("c");
    bottom->addChildElement(next);
    if (level % 3 == 0) bottom->addChildElement(level == 3000 ? kept : made("x"));
    if (level % 5 == 0) bottom->addChildElement(made("x"), next);
    bottom = next;
  }
  const std::weak_ptr<Element> last = bottom;
  const LogCapture log;
  bottom->addChildElement(top);
  EXPECT_TRUE(top->xmlString());
  EXPECT_EQ(LogCapture::lines()[1], "An element below 1000 others cannot be written (2 times)");
  kept->addChildElement(made("c"));
  EXPECT_TRUE(bottom->elements().empty());
  bottom.reset();
  top.reset();
  EXPECT_TRUE(last.expired());
  EXPECT_EQ(shown(kept->elements()), "[<c>]");
}

}  // namespace
}  // namespace kestrelink::testing
