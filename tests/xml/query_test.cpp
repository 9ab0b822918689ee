#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperQuery.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

const char* const kTree =
    "<q:r xmlns:q='urn:query-test' a='1'><!-- c --><q:c>one</q:c><d>two<q:c>three</q:c></d></q:r>";

TEST(Query, SelectsNodesAsElements) {
  const auto doc = read(kTree);
  const std::pair<const char*, const char*> rows[] = {
      {"q:c", "[one]"},       {"//q:c", "[one three]"},
      {"d/q:c/..", "[two]"},  {"@a", "[1]"},  // an attribute node, whose text is its child
      {"text()", "[]"},                       // there is none
      {"d/text()", "[-]"},                    // a text node has no children
      {"comment()", "[-]"},   {"/", "[-]"},
      {"namespace::q", "[]"},  // no node of the tree
      {"missing", "[]"},
  };
  for (const auto& [xpath, expected] : rows) {
    std::optional<ErrorInfo> error;
    const auto results = doc->getResultsByXpathQuery(xpath, &error);
    ASSERT_TRUE(results) << xpath << " " << text(error);
    std::vector<std::optional<std::string>> texts;
    for (const auto& result : *results) texts.push_back(result->textContent());
    EXPECT_EQ(shown(texts), expected) << xpath;
  }
  EXPECT_EQ(doc->firstResultByXpathQuery("@a")->tagName(), "a");
  EXPECT_EQ(doc->firstResultByXpathQuery("/")->tagName(), std::nullopt);
  EXPECT_EQ(doc->firstResultByXpathQuery("/")->elements().size(), 1u);
  EXPECT_EQ(doc->firstResultByXpathQuery("missing"), nullptr);
}

TEST(Query, Errors) {
  const LogCapture log;
  const auto doc = read(kTree);
  const std::pair<const char*, std::vector<std::string_view>> rows[] = {
      {"XMLWrapperErrorDomain 300",
       {"q:c[", "", "never-registered:c", "never()", std::string_view("q:c\0d", 5)}},
      {"XMLWrapperErrorDomain 301", {"count(//q:c)", "'text'", "true()"}}};
  for (const auto& [expected, xpaths] : rows) {
    for (const auto xpath : xpaths) {
      std::optional<ErrorInfo> error;
      EXPECT_EQ(doc->getResultsByXpathQuery(xpath, &error), std::nullopt) << xpath;
      EXPECT_EQ(text(error), expected) << xpath;
    }
  }
  LogCapture::lines().clear();
  EXPECT_EQ(doc->documentElement()->getResultsByXpathQuery("count(*)"), std::nullopt);
  EXPECT_EQ(LogCapture::lines(), std::vector<std::string>{"XMLWrapperErrorDomain 301"});
}

TEST(Query, PrefixesAreFoundWhereverTheyStand) {
  const auto doc = read("<o:r xmlns:o='urn:o' xmlns:odiv='urn:d' x='3'><o:n>2</o:n><b/></o:r>");
  for (const auto xpath : {"/*[@x -o:n > 0]", "/*[-o:n < 0]", "/*[5-o:n = 3]", "/*[@x div-o:n < 0]",
                           "/*[o :n]", "/*[o:n|odiv:x]", "/*[o:n!='a:b']", "/*[.-o:n != 1]"}) {
    std::optional<ErrorInfo> error;
    const auto results = doc->getResultsByXpathQuery(xpath, &error);
    EXPECT_EQ(results ? results->size() : 0, 1u) << xpath << " " << text(error);
  }
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
