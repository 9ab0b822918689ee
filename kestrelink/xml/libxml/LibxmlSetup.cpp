#include "kestrelink/xml/libxml/LibxmlSetup.h"

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

// If setup runs out of memory, the next call retries. libxml2 alone would treat it as done.

bool initialiseParser() {
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  libxmlInitialise();
  if (!route.outOfMemory()) return true;
  libxmlForgetEncodings();
  throw std::bad_alloc();
}

bool initialiseSchemaTypes() {
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  static_cast<void>(xmlSchemaInitTypes());
  if (!route.outOfMemory() && allSchemaTypesThere()) return true;
  libxmlForgetSchemaTypes();
  throw std::bad_alloc();
}

}  // namespace

// Static locals, not std::call_once: out of memory, an exception that passes through the C
// library ends the process.

void ensureLibxmlParser() { [[maybe_unused]] static const bool done = initialiseParser(); }

void ensureLibxmlSchemaTypes() {
  ensureLibxmlParser();
  [[maybe_unused]] static const bool done = initialiseSchemaTypes();
}

}  // namespace kestrelink
