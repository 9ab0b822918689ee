#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

class XMLWrapperElement;
class XMLWrapperNamespace;

/// Runs XPath 1.0 expressions and turns the nodes they select into elements. The prefixes that
/// expressions may use are one table for the whole process: every namespace that a
/// parsed element or document was given, the latest binding of a prefix in force.
///
/// Threads: the table is guarded by a lock; an evaluation touches only its own document.
class XMLWrapperQuery : public std::enable_shared_from_this<XMLWrapperQuery> {
 public:
  using Results = std::vector<std::shared_ptr<XMLWrapperElement>>;

  /// Binds the namespace's prefix. A default namespace is passed over: XPath 1.0 has no way to
  /// name it.
  void registerNamespace(const XMLWrapperNamespace& ns);

  /// Makes the table's prefixes known to the context, as far as the expression names them; false
  /// when one was refused.
  bool registerXpathNamespacesForCtx(_xmlXPathContext* context, std::string_view xpath) const;

  /// Evaluates the expression over the document with the node as context, or without a context
  /// when the node is null. Absent with code 201 (not prepared), 300 (not evaluated) or 301 (no
  /// set of nodes) of "XMLWrapperErrorDomain".
  std::optional<Results> executeXpathQuery(const XmlNodeRef& context, std::string_view xpath,
                                           ErrorOut error = nullptr);

  /// The same; absent without an error when the node belongs to no document.
  std::optional<Results> searchNodeWithXpathQuery(const XmlNodeRef& node, std::string_view xpath,
                                                  ErrorOut error = nullptr);

  /// A new element for an element node; null for any other node.
  std::shared_ptr<XMLWrapperElement> elementForNode(const XmlNodeRef& node);
};

}  // namespace kestrelink
