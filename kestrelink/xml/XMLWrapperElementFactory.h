#pragma once

#include <string_view>

#include "kestrelink/xml/XMLWrapperElementClass.h"

struct _xmlNode;

namespace kestrelink {

inline constexpr std::string_view kXMLWrapperDefaultElementKey = "DefaultElementClass";

/// `XMLWrapperElement::elementClass`, which the registry has as its default. Defined beside it: the
/// registry is below the elements.
const XMLWrapperElementClass& plainElementClass();

/// Process-wide registry: which element class represents a node, by local name. Prefix and
/// namespace are ignored.
///
/// Threads: everything may be called from any thread at any time.
class XMLWrapperElementFactory {
 public:
  static XMLWrapperElementFactory& sharedInstance();

  /// Stores the class under the name and replaces an earlier one. A null class or an empty name is
  /// ignored.
  static void registerClass(const XMLWrapperElementClass* elementClass,
                            std::string_view forElementName);

  /// The class registered under exactly that name, or null.
  static const XMLWrapperElementClass* elementClassByTagName(std::string_view tagName);

  /// Always 0: elements have no types.
  static unsigned elementTypeByTagName(std::string_view tagName);

  /// The class registered for the node's local name, or else the one registered under
  /// "DefaultElementClass".
  const XMLWrapperElementClass& classForXMLNode(const _xmlNode* node) const;

 private:
  XMLWrapperElementFactory();
};

}  // namespace kestrelink
