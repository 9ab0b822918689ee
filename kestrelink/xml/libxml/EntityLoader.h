#pragma once

struct _xmlParserCtxt;
struct _xmlParserInput;

namespace kestrelink {

/// libxml2's external entity loader while the library is in use. For any location it returns the
/// resource of the bundle named by the last path component, or null. It reads nothing else.
_xmlParserInput* XMLWExternalEntityLoader(const char* url, const char* publicIdentifier,
                                          _xmlParserCtxt* context) noexcept;

/// Installs `XMLWExternalEntityLoader` for the whole process, from any thread, and leaves it
/// installed.
void installEntityLoader();

}  // namespace kestrelink
