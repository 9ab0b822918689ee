#pragma once

#include <memory>
#include <vector>

#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

class XMLTreeReading;
class XMLWrapperElement;
class XMLWrapperElementClass;
class XMLWrapperNamespace;
class XMLWrapperQuery;

/// Reads nodes of one tree as elements: a walk over each node and all below it. The elements share
/// what they recorded and the query, which may be null.
class TreeReader {
 public:
  TreeReader(const SharedXmlDoc& tree, std::shared_ptr<XMLWrapperQuery> query);

  /// A new element of that class. The node is of any kind except a namespace node.
  std::shared_ptr<XMLWrapperElement> read(_xmlNode* node, const XMLWrapperElementClass& asClass);
  /// The same, of the class that is registered for the node's name.
  std::shared_ptr<XMLWrapperElement> read(_xmlNode* node);

  /// The bindings of prefixes that the elements recorded: of two bindings of a prefix the one that
  /// was read last. They live as long as the reader.
  std::vector<const XMLWrapperNamespace*> prefixes() const;

 private:
  std::shared_ptr<XMLTreeReading> reading_;
};

}  // namespace kestrelink
