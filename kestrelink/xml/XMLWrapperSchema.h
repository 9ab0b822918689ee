#pragma once

#include <memory>

#include "kestrelink/platform/SharedBytes.h"
#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

/// A compiled XML Schema. Its imports come only from the library's resource bundle.
///
/// Threads: any thread may compile and use schemas; each is used by one thread at a time.
class XMLWrapperSchema {
 public:
  /// Compiles the schema; null when that fails, with the reason in the diagnostic log. Installs
  /// `XMLWExternalEntityLoader` for the whole process and leaves it installed.
  static std::unique_ptr<XMLWrapperSchema> initWithSchemaData(const SharedBytes& schemaData);

  /// Whether the document is valid. If not: `kXMLWrapperErrorNotValid` with a description, which
  /// has a line "ERROR code:  line number: message" for each fault.
  bool validateDocument(_xmlDoc* doc, ErrorOut error = nullptr) const;

  explicit XMLWrapperSchema(XmlSchemaOwner schema) : schemaPtr_(std::move(schema)) {}

 private:
  XmlSchemaOwner schemaPtr_;
};

/// Stores `kXMLWrapperErrorNotValid` with the description.
void storeSchemaError(ErrorOut error, std::string_view description);

inline constexpr std::string_view kSchemaContextFailure = "Failed to create schema context";

}  // namespace kestrelink
