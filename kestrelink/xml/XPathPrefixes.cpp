#include "kestrelink/xml/XPathPrefixes.h"

#include <mutex>

#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/xml/XMLWrapperNamespace.h"

namespace kestrelink {
namespace {

struct Table {
  std::mutex lock;
  XPathBindings bindings;
};

Table& table() {
  static auto& instance = noDestructor<Table>();
  return instance;
}

// The longest name at the end of the text, without trailing blanks.
std::string_view nameBefore(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  constexpr std::string_view kDelimiters = " \t\r\n()[]@,|+=!<>*/$'\":";
  text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
  return text.substr(text.find_last_of(kDelimiters) + 1);  // npos + 1 is 0
}

}  // namespace

void bindXPathPrefixes(const std::vector<const XMLWrapperNamespace*>& namespaces) {
  Table& all = table();
  const std::lock_guard guard(all.lock);
  for (const XMLWrapperNamespace* const ns : namespaces) {
    const std::optional<std::string>& prefix = ns->prefix();
    if (prefix && !prefix->empty()) all.bindings.insert_or_assign(*prefix, ns->href());
  }
}

// Copies only what the expression can use: the table holds every prefix read so far.
XPathBindings xpathBindingsFor(std::string_view xpath) {
  Table& all = table();
  const std::lock_guard guard(all.lock);
  XPathBindings copy;
  for (std::size_t colon = xpath.find(':'); colon != std::string_view::npos;
       colon = xpath.find(':', colon + 1)) {
    std::string_view name = nameBefore(xpath.substr(0, colon));
    // In "5-p:n", "a div-p:n" and "orp:n" the prefix may be only the end of the name.
    for (; !name.empty(); name.remove_prefix(1)) {
      if (const auto found = all.bindings.find(name); found != all.bindings.end()) {
        copy.insert(*found);
      }
    }
  }
  return copy;
}

}  // namespace kestrelink
