#include "kestrelink/xml/libxml/LibxmlSetup.h"

#include <mutex>
#include <new>

#include <libxml/parser.h>
#include <libxml/schemasInternals.h>
#include <libxml/xmlschemastypes.h>

#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"

namespace kestrelink {

namespace {

// libxml2 reports no error when it runs out of memory while it adds a type to its table.
bool allSchemaTypesThere() {
  for (int value = XML_SCHEMAS_STRING; value <= XML_SCHEMAS_ANYSIMPLETYPE; ++value) {
    const xmlSchemaType* const type = xmlSchemaGetBuiltInType(static_cast<xmlSchemaValType>(value));
    if (type == nullptr || xmlSchemaGetPredefinedType(type->name, type->targetNamespace) != type) {
      return false;
    }
  }
  return true;
}

}  // namespace

// If setup ran out of memory, the next call retries. libxml2 alone would treat it as done.

void ensureLibxmlParser() {
  static std::once_flag once;
  std::call_once(once, [] {
    const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
    libxmlInitialise();
    if (!route.outOfMemory()) return;
    libxmlForgetEncodings();
    throw std::bad_alloc();
  });
}

void ensureLibxmlSchemaTypes() {
  ensureLibxmlParser();
  static std::once_flag once;
  std::call_once(once, [] {
    const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
    static_cast<void>(xmlSchemaInitTypes());
    if (!route.outOfMemory() && allSchemaTypesThere()) return;
    libxmlForgetSchemaTypes();
    throw std::bad_alloc();
  });
}

}  // namespace kestrelink
