#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperQuery.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

TEST(Query, GoldenResults) {
  const LogCapture log;
  expectCases("tests/golden/cases/queries.txt", [](const std::string& input) {
    const std::size_t at = input.find(" in <");
    const auto doc = read(input.substr(at + 4));
    std::optional<ErrorInfo> error;
    const auto found = doc->getResultsByXpathQuery(input.substr(0, at), &error);
    if (!found) return "error: " + text(error);
    std::string all = std::to_string(found->size()) + " found";
    for (const auto& element : *found) all += "\n" + described(*element);
    const auto first = doc->firstResultByXpathQuery(input.substr(0, at));
    EXPECT_EQ(first != nullptr, !found->empty());
    return all;
  });
  LogCapture::lines().clear();
  EXPECT_EQ(read("<r/>")->documentElement()->getResultsByXpathQuery("count(*)"), std::nullopt);
  EXPECT_EQ(LogCapture::lines(), std::vector<std::string>{"XMLWrapperErrorDomain 301"});
}

TEST(Query, TheLatestBindingOfAPrefixIsInForce) {
  const auto first = read("<l:r xmlns:l='urn:first'/>");
  EXPECT_EQ(first->getResultsByXpathQuery("/l:r")->size(), 1u);
  const auto second = read("<l:r xmlns:l='urn:second'/>");
  EXPECT_EQ(first->getResultsByXpathQuery("/l:r")->size(), 0u);
  first->setNamespace({"l", "urn:first"});
  EXPECT_EQ(first->namespaces(), nullptr);
  EXPECT_EQ(first->getResultsByXpathQuery("/l:r")->size(), 1u);

  // Within one message it is the binding of the element read last, wherever it was declared.
  const auto rebound = read("<m:r xmlns:m='urn:outer'><m:i xmlns:m='urn:inner'/><m:o/></m:r>");
  EXPECT_EQ(rebound->getResultsByXpathQuery("//m:*")->size(), 2u);
  const auto inner = read("<m:r xmlns:m='urn:outer'><m:o/><m:i xmlns:m='urn:inner'/></m:r>");
  EXPECT_EQ(inner->getResultsByXpathQuery("//m:*")->size(), 1u);
}

TEST(Query, NodesWithoutADocument) {
  const auto element = XMLWrapperElement::initWithTagName("made");
  EXPECT_EQ(element->getResultsByXpathQuery("."), std::nullopt) << "no query object";
  const auto query = std::make_shared<XMLWrapperQuery>();
  element->setQuery(query);
  for (const auto self : {".", "ancestor-or-self::*", "(//x | .)"}) {
    EXPECT_EQ(element->getResultsByXpathQuery(self)->size(), 1u) << self;
  }
  EXPECT_EQ(element->getResultsByXpathQuery("//made")->size(), 0u);

  const XmlNodeOwner node(xmlNewNode(nullptr, BAD_CAST "free"));
  std::optional<ErrorInfo> error;
  EXPECT_EQ(query->searchNodeWithXpathQuery({nullptr, node.get()}, ".", &error), std::nullopt);
  EXPECT_EQ(text(error), "none");
  EXPECT_EQ(query->elementForNode({nullptr, node.get()})->tagName(), "free");
  const XmlNodeOwner textNode(xmlNewText(BAD_CAST "text"));
  EXPECT_EQ(query->elementForNode({nullptr, textNode.get()}), nullptr);

  // A node of another document is no context.
  const auto here = XMLWrapperDoc::initWithData(bytes("<r/>"), nullptr);
  const SharedXmlDoc elsewhere = read("<r/>")->docNode();
  EXPECT_EQ(query->executeXpathQuery({elsewhere, here->nodePtr()}, ".", &error), std::nullopt);
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 201");
}

}  // namespace
}  // namespace kestrelink::testing
