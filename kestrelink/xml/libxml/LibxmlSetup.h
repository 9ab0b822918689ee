#pragma once

namespace kestrelink {

/// Initialise libxml2's parser and, for the second, its schema types: once, on first use, from any
/// thread. Left to itself, libxml2 before 2.15 lets two threads race here.
void ensureLibxmlParser();
void ensureLibxmlSchemaTypes();

}  // namespace kestrelink
