#include "kestrelink/xml/libxml/EntityLoader.h"

#include <atomic>
#include <climits>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include <libxml/parser.h>

#include "kestrelink/platform/ResourceBundle.h"
#include "kestrelink/platform/UrlText.h"
#include "kestrelink/xml/libxml/LibxmlCompat.h"
#include "kestrelink/xml/libxml/LibxmlErrorRoute.h"

namespace kestrelink {
namespace {

// The loader that was installed when the latest schema was made. Never called: the library's own
// stays installed, so that later parsing reaches no network and no file.
std::atomic<xmlExternalEntityLoader> defaultLoader{nullptr};

}  // namespace

xmlParserInput* XMLWExternalEntityLoader(const char* url, const char* /*publicIdentifier*/,
                                         xmlParserCtxt* context) noexcept {
  try {
    const ResourceBundle* const bundle = ResourceBundle::ofLibrary();
    if (url == nullptr || bundle == nullptr) return nullptr;
    const std::string_view file = lastPathComponent(url);
    const std::size_t dot = file.rfind('.');
    const auto extension =
        dot == std::string_view::npos ? std::nullopt : std::optional(file.substr(dot + 1));
    const std::optional<std::string> text = bundle->text(file.substr(0, dot), extension);
    if (!text || text->size() > INT_MAX) return nullptr;
    return libxmlStreamOver(context, text->data(), static_cast<int>(text->size()));
  } catch (const std::exception&) {
    LibxmlErrorRoute::noteOutOfMemory();
    return nullptr;
  }
}

void installEntityLoader() {
  static std::mutex installing;
  const std::lock_guard lock(installing);
  const xmlExternalEntityLoader installed = xmlGetExternalEntityLoader();
  defaultLoader = installed;
  // Other threads may be parsing, so do not write the same value again.
  if (installed != &XMLWExternalEntityLoader) {
    xmlSetExternalEntityLoader(&XMLWExternalEntityLoader);
  }
}

}  // namespace kestrelink
