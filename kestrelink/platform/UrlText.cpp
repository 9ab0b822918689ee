#include "kestrelink/platform/UrlText.h"

namespace kestrelink {
namespace {

// Removes scheme and authority (RFC 3986, section 3).
std::string_view pathOf(std::string_view url) {
  constexpr std::string_view kEndOfScheme = ":/";
  const std::size_t end = url.find_first_of(kEndOfScheme);
  if (end != std::string_view::npos && url[end] == ':') url.remove_prefix(end + 1);
  if (!url.starts_with("//")) return url;
  const std::size_t slash = url.find('/', 2);
  return slash == std::string_view::npos ? std::string_view() : url.substr(slash);
}

}  // namespace

std::string_view lastPathComponent(std::string_view url) {
  std::string_view path = pathOf(url.substr(0, url.find_first_of("?#")));
  while (path.ends_with('/')) path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace kestrelink
