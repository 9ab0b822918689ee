#include "kestrelink/xml/libxml/AbsoluteUrl.h"

#include <memory>

#include <libxml/uri.h>

#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"
#include "kestrelink/xml/libxml/LibxmlSetup.h"

namespace kestrelink {
namespace {

struct UriFree {
  void operator()(xmlURI* uri) const noexcept { xmlFreeURI(uri); }
};

}  // namespace

std::optional<std::string> absoluteUrlText(std::string_view url) {
  std::string text(url);
  if (text.empty() || text.find('\0') != std::string::npos) return std::nullopt;
  ensureLibxmlParser();
  const LibxmlErrorRoute route(LibxmlErrorRoute::During::parsing);
  const std::unique_ptr<xmlURI, UriFree> uri(xmlParseURI(text.c_str()));
  route.throwIfOutOfMemory();  // not to be taken for text that is no URL
  if (!uri) return std::nullopt;
  return text;
}

}  // namespace kestrelink
