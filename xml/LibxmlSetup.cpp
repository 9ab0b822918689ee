#include "kestrelink/xml/LibxmlSetup.h"

#include <mutex>

#include <libxml/parser.h>
#include <libxml/xmlschemastypes.h>

namespace kestrelink {

void ensureLibxmlParser() {
  static std::once_flag once;
  std::call_once(once, [] { xmlInitParser(); });
}

void ensureLibxmlSchemaTypes() {
  ensureLibxmlParser();
  static std::once_flag once;
  std::call_once(once, [] { static_cast<void>(xmlSchemaInitTypes()); });
}

}  // namespace kestrelink
