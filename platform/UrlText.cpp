#include "kestrelink/platform/UrlText.h"

#include <memory>

#include <libxml/uri.h>

namespace kestrelink {
namespace {

struct UriFree {
  void operator()(xmlURI* uri) const noexcept { xmlFreeURI(uri); }
};

}  // namespace

std::optional<std::string> absoluteUrlText(std::string_view url) {
  std::string text(url);
  if (text.empty() || text.find('\0') != std::string::npos) return std::nullopt;
  const std::unique_ptr<xmlURI, UriFree> uri(xmlParseURI(text.c_str()));
  if (!uri) return std::nullopt;
  return text;
}

std::string_view lastPathComponent(std::string_view url) {
  std::string_view path = url.substr(0, url.find_first_of("?#"));
  while (path.ends_with('/')) path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace kestrelink
