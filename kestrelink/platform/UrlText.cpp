#include "kestrelink/platform/UrlText.h"

namespace kestrelink {

std::string_view lastPathComponent(std::string_view url) {
  std::string_view path = url.substr(0, url.find_first_of("?#"));
  while (path.ends_with('/')) path.remove_suffix(1);
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace kestrelink
