#include <libxml/tree.h>

#include "kestrelink/xml/libxml/LibxmlText.h"

#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

TEST(Document, HasABoundOnReferencesToEntities) {
  const LogCapture log;
  EXPECT_EQ(XMLWrapperDoc::initWithData(nullptr, nullptr), nullptr);
  std::string references = "<!DOCTYPE r [<!ENTITY e 'x'>]><r>";
  for (int count = 0; count < 100; ++count) references += "&e;";
  EXPECT_TRUE(read(references + "</r>"));
  EXPECT_FALSE(read(references + "&e;</r>"));
}

TEST(Document, ErrorsGoToTheLogWithoutTheMessagesText) {
  const LogCapture log;
  read("<r><secret></r>");
  ASSERT_FALSE(LogCapture::lines().empty());
  for (const std::string& line : LogCapture::lines()) {
    EXPECT_EQ(line.rfind("libxml2: error domain 1 code ", 0), 0u) << line;
    EXPECT_EQ(line.find("secret"), std::string::npos) << line;
  }
  LogCapture::lines().clear();
  std::string manyErrors = "<r>";
  for (int count = 0; count < 1000; ++count) manyErrors += "&undefined;";
  read(manyErrors + "</r>");
  EXPECT_EQ(LogCapture::lines().size(), 9u);
  EXPECT_EQ(LogCapture::lines().back(),
            "libxml2: " + std::to_string(fuzz::reportedErrors(1000) - 8) + " more errors");
}

TEST(Document, BuiltAroundAnElement) {
  std::optional<ErrorInfo> error = ErrorInfo{"untouched", 1, {}};
  const auto element = XMLWrapperElement::initWithTagName("r");
  const auto doc = XMLWrapperDoc::initWithElement(element, nullptr, &error);
  EXPECT_EQ(text(error), "untouched 1");
  EXPECT_EQ(doc->docPtr(), nullptr);
  EXPECT_EQ(doc->getResultsByXpathQuery("/r", &error), std::nullopt);
  EXPECT_EQ(text(error), "untouched 1");
  EXPECT_EQ(doc->xmlString(), "<r/>");
  element->setTextContent("later");
  EXPECT_EQ(doc->xmlString(), "<r>later</r>");

  doc->setDocumentElement(root("<r xmlns:p='urn:p' p:a='v'/>"));
  const SharedXmlDoc tree = doc->docNode();
  EXPECT_EQ(viewOf(tree->version), "2.0");
  EXPECT_EQ(viewOf(xmlDocGetRootElement(tree.get())->properties->ns->href), "urn:p");

  doc->setDocumentElement(nullptr);
  EXPECT_EQ(doc->docNode(&error), nullptr);
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 101");
  error.reset();
  EXPECT_EQ(doc->xmlString(&error), std::nullopt);
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 101");
}

TEST(Document, ParsingAnewLeavesEarlierElementsSafe) {
  const auto doc = XMLWrapperDoc::initWithData(bytes("<r><c/></r>"), nullptr);
  const auto earlier = doc->documentElement();
  doc->setXmlData(bytes("<s/>"));
  ASSERT_TRUE(doc->createDocument());
  EXPECT_EQ(doc->nodePtr(), nullptr);
  EXPECT_EQ(earlier->getResultsByXpathQuery("c"), std::nullopt);
  EXPECT_EQ(earlier->xmlString(), "<r>\n  <c/>\n</r>");
  EXPECT_EQ(doc->createDocumentElement()->tagName(), "s");
  EXPECT_EQ(doc->xmlString(), "<r>\n  <c/>\n</r>");

  doc->setSchemaData(bytes("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'/>"));
  std::optional<ErrorInfo> error;
  EXPECT_FALSE(doc->createDocument(&error));
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 100");
}

TEST(Document, HundredsOfNamespacesCostNoElementAnything) {
  std::string xml = "<r";
  for (int n = 0; n < 300; ++n) xml += " xmlns:p" + std::to_string(n) + "='u'";
  xml += ">";
  for (int n = 0; n < 300; ++n) xml += "<p" + std::to_string(n) + ":c/>";
  const auto element = root(xml + "</r>");
  EXPECT_EQ(element->elements().front()->namespaces().size(), 300u);
  EXPECT_EQ(element->elements().back()->namespaces().size(), 1u);
  // Nor the elements that a query finds.
  const auto doc = read(xml + "</r>");
  const auto found = doc->getResultsByXpathQuery("*");
  ASSERT_EQ(found->size(), 300u);
  EXPECT_EQ(&found->front()->namespaces().at(299), &found->back()->namespaces().at(0));
}

}  // namespace
}  // namespace kestrelink::testing
