#include <libxml/tree.h>

#include "kestrelink/saml/elements/SAMLNamespaces.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/libxml/DetachedNode.h"
#include "kestrelink/xml/libxml/LibxmlDump.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

using Element = XMLWrapperElement;

std::shared_ptr<Element> made(std::string_view tagName) {
  return Element::initWithTagName(tagName);
}

TEST(Element, GoldenTrees) {
  SAMLParserController::sharedInstance();
  expectCases("tests/golden/cases/trees.txt", [](const std::string& xml) {
    const LogCapture log;
    std::optional<ErrorInfo> error;
    const auto doc = XMLWrapperDoc::initWithData(bytes(xml), nullptr, &error);
    if (!doc) return "no document, error: " + text(error);
    std::string all = described(*doc->documentElement());
    const auto written = doc->xmlString(&error);
    EXPECT_EQ(doc->xmlString(), written) << "written twice";
    for (const std::string& line : LogCapture::lines()) {
      if (!line.starts_with("libxml2")) all += "\nlog: " + line;
    }
    return all + "\nwritten: " + shown(written) + (error ? " error: " + text(error) : "");
  });
}

TEST(ElementReading, OfManyAttributesTheLaterIsKept) {
  std::string many = "<r xmlns:p='urn:p'";
  for (int n = 0; n < 40; ++n) many += " a" + std::to_string(n) + "='1'";
  const auto wide = root(many + " p:a3='2' p:a30='3' p:a30x='4' \xE9='5'/>");
  EXPECT_EQ(wide->attributes().size(), 41u);
  EXPECT_EQ(wide->attributes()[3].second->value(), "2");
  EXPECT_EQ(wide->attributes()[30].second->value(), "3");
  EXPECT_EQ(wide->attributeWithName("p:a3"), nullptr);
}

TEST(ElementReading, AnElementChangesItsNamespacesAlone) {
  const auto parent =
      root("<b:r xmlns:a='urn:a' xmlns:b='urn:b' xmlns:c='urn:c'><a:x/><c:y/></b:r>");
  const auto& child = parent->elements()[0];
  child->setNamespace(std::make_shared<XMLWrapperNamespace>("b", "urn:new"));
  child->setNamespace(SAMLAssertionNamespace());
  EXPECT_EQ(described(*parent),
            "r xmlns:b=urn:b xmlns:c=urn:c\n  x xmlns:a=urn:a xmlns:b=urn:new xmlns:c=urn:c "
            "xmlns:saml=urn:oasis:names:tc:SAML:2.0:assertion\n  y xmlns:c=urn:c");

  const NamespaceMap& declared = child->namespaces();
  for (std::size_t position = 0; position < declared.size(); ++position) {
    EXPECT_EQ(declared.find(declared.at(position)->prefix()), declared.at(position));
  }
  EXPECT_EQ(declared.find("none"), nullptr);
  EXPECT_EQ(NamespaceMap().find(std::nullopt), nullptr);
}

// In a process of its own: nobody has asked the factory before.
TEST(ElementFactory, KnowsThePlainClassFromTheStart) {
  EXPECT_EQ(XMLWrapperElementFactory::elementClassByTagName("DefaultElementClass"),
            &XMLWrapperElement::elementClass);
}

struct Ordered : SAMLBaseElement {
  Ordered() { setChildElementSequence({{"b", "a"}}); }
  void setElementProperties() override {
    setAttributeWithName("children", std::to_string(elements().size()));
  }
};

TEST(ElementReading, AClassMaySetAnOrderBeforeAndPropertiesAfter) {
  static const XMLWrapperElementClass ordered("Ordered", &makeElementInstance<Ordered>);
  XMLWrapperElementFactory::registerClass(&ordered, "Ordered");
  const auto doc = read("<o:Ordered xmlns:o='urn:ordered'><a/><b/></o:Ordered>");
  const auto element = doc->documentElement();
  EXPECT_EQ(element->tagName(), "Ordered");
  EXPECT_EQ(element->getResultsByXpathQuery("a")->size(), 1u);
  EXPECT_EQ(element->xmlString(),
            "<o:Ordered xmlns:o=\"urn:ordered\" children=\"2\">\n  <b/>\n  <a/>\n</o:Ordered>");
}

TEST(ElementFactory, Registration) {
  using Factory = XMLWrapperElementFactory;
  static int times = 0;  // a class stays registered
  const std::string name = "Test" + std::to_string(++times);
  Factory::registerClass(&SAMLStatus::elementClass, "");
  Factory::registerClass(nullptr, name);
  EXPECT_EQ(Factory::elementClassByTagName(""), nullptr);
  EXPECT_EQ(Factory::elementClassByTagName(name), nullptr);
  Factory::registerClass(&SAMLStatus::elementClass, name);
  Factory::registerClass(&SAMLSubject::elementClass, name);
  EXPECT_EQ(Factory::elementClassByTagName(name), &SAMLSubject::elementClass);
  EXPECT_EQ(Factory::elementTypeByTagName(name), 0u);
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

  parent->setAttributeWithName("n", "v");
  EXPECT_EQ(parent->attributeWithName("n")->type(), 0);
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
  const auto parsed = root("<r><c/></r>"), child = parsed->elements().front();
  child->addChildElement(parsed);
  EXPECT_EQ(LogCapture::lines().size(), 5u);
  EXPECT_EQ(top->xmlString(),
            "<top>\n  <middle>\n    <bottom>\n      <fine/>\n    </bottom>\n  </middle>\n</top>");
}

// Each would take minutes if everything below an element were looked at for every child.
TEST(ElementTree, ChecksForCyclesInLittleTime) {
  std::shared_ptr<Element> top = made("bottom");
  const auto bottom = top;
  for (int level = 0; level < 200000; ++level) {
    const auto above = level < 20000 ? root("<c/>") : made("c");
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

TEST(ElementWriting, NamespacesAndAttributesThatLibxmlRefuses) {
  const DetachedNode node(XmlNodeOwner(xmlNewNode(nullptr, BAD_CAST "r")));
  const auto ns = SAMLAssertionNamespace();
  std::optional<ErrorInfo> error;
  EXPECT_NE(ns->xmlNsForNode(node.get(), &error), nullptr);
  EXPECT_EQ(text(error), "none");
  EXPECT_EQ(ns->xmlNsForNode(node.get(), &error), nullptr);
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
