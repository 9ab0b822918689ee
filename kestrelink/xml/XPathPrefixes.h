// The prefixes that XPath expressions may use: one table for the whole process, under a lock.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelink {

class XMLWrapperNamespace;

/// Binds each namespace's prefix, in place of an earlier binding. A default namespace is ignored:
/// XPath 1.0 cannot name it.
void bindXPathPrefixes(const std::vector<const XMLWrapperNamespace*>& namespaces);

/// Namespace names by prefix.
using XPathBindings = std::map<std::string, std::optional<std::string>, std::less<>>;

/// The bindings that the expression can use.
XPathBindings xpathBindingsFor(std::string_view xpath);

}  // namespace kestrelink
