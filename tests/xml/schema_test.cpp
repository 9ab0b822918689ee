#include <libxml/parser.h>
#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperSchema.h"

#include "tests/support/LibxmlVersion.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

const char* const kHead = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>";

// An import by the name that the bundle knows, from wherever.
std::string import(const std::string& location) {
  return "<xs:import namespace='http://www.w3.org/2001/04/xmlenc#' schemaLocation='" + location +
         "'/>";
}

SharedBytes schema(const std::string& content) { return bytes(kHead + content + "</xs:schema>"); }

TEST(Schema, ErrorsAreDescribedWithTheirLines) {
  const auto number = schema("<xs:element name='r' type='xs:integer'/>");
  std::optional<ErrorInfo> error;
  EXPECT_TRUE(XMLWrapperDoc::initWithData(bytes("<r>1</r>"), number, &error));
  EXPECT_EQ(text(error), "none");
  EXPECT_FALSE(XMLWrapperDoc::initWithData(bytes("\n<r>x</r>"), number, &error));
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 100");
  EXPECT_EQ(error->info[std::string(kLocalizedDescriptionKey)],
            "ERROR 1824:  line 2: Element 'r': 'x' is not a valid value of the atomic type "
            "'xs:integer'.\n\n");
}

TEST(Schema, WhatCannotBeCompiledIsLogged) {
  const LogCapture log;
  const std::pair<SharedBytes, const char*> rows[] = {
      {bytes("not XML"), "Schema could not be loaded"},
      {nullptr, "Schema could not be loaded"},
      {bytes("<r/>"), "Schema is not valid"},
      {schema("<xs:element name='r' type='missing'/>"), "Schema is not valid"},
      {schema("<xs:include schemaLocation='/etc/absent.xsd'/>"), "Schema is not valid"},
  };
  for (const auto& [data, expected] : rows) {
    LogCapture::lines().clear();
    EXPECT_EQ(XMLWrapperSchema::initWithSchemaData(data), nullptr);
    ASSERT_FALSE(LogCapture::lines().empty());
    EXPECT_EQ(LogCapture::lines().back(), expected);
    if (std::string_view(expected) == "Schema is not valid") {
      EXPECT_EQ(LogCapture::lines().front().rfind("XML SCHEMA VALIDITY ERROR: ", 0), 0u);
    }
  }
  std::optional<ErrorInfo> error;
  EXPECT_FALSE(XMLWrapperDoc::initWithData(bytes("<r/>"), bytes("<r/>"), &error));
  EXPECT_EQ(text(error), "XMLWrapperErrorDomain 100");
  EXPECT_EQ(error->info.begin()->second, "Failed to create schema context");
}

// libxml2 takes an I/O error of before for the reason why an import is missing, and passes over it.
TEST(Schema, AMissingImportIsMissedWhateverFailedBefore) {
  if (fuzz::kNewLibxml)
    GTEST_SKIP() << "Skipped: saving leaves no error in new versions of libxml2";
  const LogCapture log;
  const XmlDocOwner doc(xmlNewDoc(BAD_CAST "1.0"));
  xmlSaveFile("/absent/folder/file.xml", doc.get());
  ASSERT_EQ(xmlGetLastError()->domain, XML_FROM_IO);
  const auto importing = schema(import("absent.xsd") + "<xs:element name='r'/>");
  EXPECT_EQ(XMLWrapperSchema::initWithSchemaData(importing), nullptr);
}

TEST(Schema, ImportsComeFromTheBundleWhateverTheirLocation) {
  for (const auto location : {"xenc-schema.xsd", "http://host.example/a/b/xenc-schema.xsd",
                              "/no/such/xenc-schema.xsd", "file:xenc-schema.xsd"}) {
    const auto importing = schema(import(location) + "<xs:element name='r'/>");
    EXPECT_TRUE(XMLWrapperSchema::initWithSchemaData(importing)) << location;
  }
}

TEST(Schema, WarningsAreLogged) {
  const LogCapture log;
  EXPECT_TRUE(XMLWrapperSchema::initWithSchemaData(
      schema(import("xenc-schema.xsd") + import("other.xsd") + "<xs:element name='r'/>")));
  ASSERT_FALSE(LogCapture::lines().empty());
  EXPECT_EQ(LogCapture::lines()[0].rfind("XML SCHEMA VALIDITY WARNING: ", 0), 0u);
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
