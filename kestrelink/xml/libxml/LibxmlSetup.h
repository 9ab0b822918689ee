#pragma once

namespace kestrelink {

/// Initialise libxml2's parser, and the second also its schema types: once, on first use, from any
/// thread. libxml2 before 2.15 does this lazily and not thread-safely. Throw `std::bad_alloc`.
void ensureLibxmlParser();
void ensureLibxmlSchemaTypes();

}  // namespace kestrelink
