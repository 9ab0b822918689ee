#include <libxml/parser.h>
#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperSchema.h"
#include "kestrelink/xml/libxml/EntityLoader.h"

#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

const char* const kHead = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>";

SharedBytes schema(const std::string& content) { return bytes(kHead + content + "</xs:schema>"); }

TEST(Schema, GoldenVerdicts) {
  expectCases("tests/golden/cases/schemas.txt", [](const std::string& line) {
    const auto parts = split(line, " | ");
    const LogCapture log;
    const SharedBytes data = parts[0].starts_with("<xs:") ? schema(parts[0]) : bytes(parts[0]);
    std::string all = XMLWrapperSchema::initWithSchemaData(data) ? "compiled" : "not compiled";
    for (const std::string& entry : LogCapture::lines()) {
      const bool isAtAnEnd =
          &entry == &LogCapture::lines().front() || &entry == &LogCapture::lines().back();
      if (isAtAnEnd) all += "\nlog: " + entry.substr(0, entry.find(": "));
    }
    std::optional<ErrorInfo> error;
    const auto doc = XMLWrapperDoc::initWithData(bytes("\n" + parts[1]), data, &error);
    EXPECT_EQ(doc == nullptr, error.has_value());
    return all + "\n" + text(error) + (error ? "\n" + error->info.begin()->second : "");
  });
  EXPECT_EQ(XMLWrapperSchema::initWithSchemaData(nullptr), nullptr);
}

// libxml2 takes an I/O error of before for the reason why an import is missing, and passes over it.
TEST(Schema, AMissingImportIsMissedWhateverFailedBefore) {
  if (fuzz::kNewLibxml)
    GTEST_SKIP() << "Skipped: saving leaves no error in new versions of libxml2";
  const LogCapture log;
  const XmlDocOwner doc(xmlNewDoc(BAD_CAST "1.0"));
  xmlSaveFile("/missing/folder/file.xml", doc.get());
  ASSERT_EQ(xmlGetLastError()->domain, XML_FROM_IO);
  const auto importing = schema(
      "<xs:import namespace='http://www.w3.org/2001/04/xmlenc#' schemaLocation='missing.xsd'/>"
      "<xs:element name='r'/>");
  EXPECT_EQ(XMLWrapperSchema::initWithSchemaData(importing), nullptr);
}

TEST(Schema, TheEntityLoaderServesTheBundleAndNothingElse) {
  ASSERT_TRUE(XMLWrapperSchema::initWithSchemaData(schema("<xs:element name='r'/>")));
  EXPECT_EQ(xmlGetExternalEntityLoader(), &XMLWExternalEntityLoader);
  const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> context(xmlNewParserCtxt(),
                                                                           xmlFreeParserCtxt);
  for (const auto url : {"/etc/hostname", "../lib/libkestrelink-saml.so", "..", ".", "", "?",
                         "http://host.example/", "saml-schema-protocol-2.0",
                         "x?saml-schema-protocol-2.0.xsd", "http://saml-schema-protocol-2.0.xsd"}) {
    EXPECT_EQ(XMLWExternalEntityLoader(url, nullptr, context.get()), nullptr) << url;
  }
  EXPECT_EQ(XMLWExternalEntityLoader(nullptr, nullptr, context.get()), nullptr);
}

TEST(Schema, ADescriptionNamesTheFileAndEndsAfterAMegabyte) {
  std::string xml = "<r";
  for (int n = 0; n < 600; ++n) {
    xml += " a" + std::to_string(n) + std::string(2000, 'x') + "=''";
  }
  xml += "/>";
  const XmlDocOwner doc(
      xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "file.xml", nullptr, 0));
  std::optional<ErrorInfo> error;
  const auto empty = schema("<xs:element name='r'><xs:complexType/></xs:element>");
  EXPECT_FALSE(XMLWrapperSchema::initWithSchemaData(empty)->validateDocument(doc.get(), &error));
  const std::vector<std::string> lines = split(error->info.begin()->second, "\n");
  const auto described = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("ERROR 1866: file.xml line 1: ");
  });
  EXPECT_LT(error->info.begin()->second.size(), 1'010'000u);
  EXPECT_EQ(lines.at(lines.size() - 2), std::to_string(600 - described) + " more errors");
}

TEST(Schema, NothingToValidate) {
  const LogCapture log;
  const std::string description = "Invalid docPtr or schemaPtr given for validating DOM Document";
  std::optional<ErrorInfo> error;
  const auto any = XMLWrapperSchema::initWithSchemaData(schema("<xs:element name='r'/>"));
  EXPECT_FALSE(any->validateDocument(nullptr, &error));
  EXPECT_EQ(error->info.begin()->second, description);
  EXPECT_EQ(LogCapture::lines().back(), description);
  EXPECT_FALSE(any->validateDocument(nullptr));
}

}  // namespace
}  // namespace kestrelink::testing
