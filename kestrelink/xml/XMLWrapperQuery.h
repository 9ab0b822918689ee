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

/// Evaluates XPath 1.0 expressions and returns the selected nodes as elements. The prefixes that
/// expressions may use are one table for the whole process. It holds every namespace of a parsed
/// element or document; the latest binding of a prefix is used.
///
/// Threads: the table is guarded by a lock; an evaluation touches only its own document.
class XMLWrapperQuery : public std::enable_shared_from_this<XMLWrapperQuery> {
 public:
  using Results = std::vector<std::shared_ptr<XMLWrapperElement>>;

  /// Binds the namespace's prefix. A default namespace is ignored: XPath 1.0 cannot name it.
  void registerNamespace(const XMLWrapperNamespace& ns);

  /// Registers with the context those prefixes of the table that the expression names; false when
  /// libxml2 refuses one.
  bool registerXpathNamespacesForCtx(_xmlXPathContext* context, std::string_view xpath) const;

  /// Evaluates the expression over the document with the node as context, or without a context when
  /// the node is null. `std::nullopt` with `kXMLWrapperErrorXPathNotPrepared`,
  /// `kXMLWrapperErrorXPathNotEvaluated` or `kXMLWrapperErrorXPathNoNodeSet`.
  std::optional<Results> executeXpathQuery(const XmlNodeRef& context, std::string_view xpath,
                                           ErrorOut error = nullptr);

  /// The same; `std::nullopt` without an error when the node belongs to no document.
  std::optional<Results> searchNodeWithXpathQuery(const XmlNodeRef& node, std::string_view xpath,
                                                  ErrorOut error = nullptr);

  /// A new element for an element node; null for any other node.
  std::shared_ptr<XMLWrapperElement> elementForNode(const XmlNodeRef& node);
};

}  // namespace kestrelink
