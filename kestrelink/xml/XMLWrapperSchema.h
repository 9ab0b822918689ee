#pragma once

#include <memory>

#include "kestrelink/platform/SharedBytes.h"
#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"

struct _xmlParserCtxt;
struct _xmlParserInput;

namespace kestrelink {

/// A compiled XML Schema. What it imports comes from the library's resource bundle alone.
///
/// Threads: schemas are compiled and used in any thread, each by one thread at a time.
class XMLWrapperSchema {
 public:
  /// Compiles the schema; null when that fails, with the reason in the diagnostic log. Installs
  /// `XMLWExternalEntityLoader` for the whole process and leaves it installed.
  static std::unique_ptr<XMLWrapperSchema> initWithSchemaData(const SharedBytes& schemaData);

  /// Whether the document is valid. If not: code 100 of "XMLWrapperErrorDomain" with a description,
  /// which holds a line "ERROR code: file line number: message" for each fault.
  bool validateDocument(_xmlDoc* doc, ErrorOut error = nullptr) const;

  explicit XMLWrapperSchema(XmlSchemaOwner schema) : schemaPtr_(std::move(schema)) {}

 private:
  XmlSchemaOwner schemaPtr_;
};

/// libxml2's external entity loader while the library is in use: answers any location with the
/// resource of the bundle that its last path component names, or with null. Nothing else is read.
_xmlParserInput* XMLWExternalEntityLoader(const char* url, const char* publicIdentifier,
                                          _xmlParserCtxt* context) noexcept;

/// Store code 100 with the description, as every failure to validate does.
void storeSchemaError(ErrorOut error, std::string_view description);

inline constexpr std::string_view kSchemaContextFailure = "Failed to create schema context";

}  // namespace kestrelink
