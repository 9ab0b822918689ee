#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrelink/platform/Export.h"
#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/NamespaceMap.h"
#include "kestrelink/xml/XMLWrapperAttribute.h"
#include "kestrelink/xml/XMLWrapperElementClass.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

class DetachedNode;
class XMLWrapperQuery;
class XMLTreeReading;

/// An XML element, read from a parsed message or made in memory to be written. The base of every
/// SAML element class.
///
///     for (const auto& nameId : subject->getElementsByTagName("NameID")) {
///       use(nameId->textContent());
///     }
///
/// An element keeps copies of what it was read from. It stays readable and writable when its
/// document is destroyed; only XPath then returns `std::nullopt`. Changes show in written XML, not
/// in the parsed tree and not in XPath results.
///
/// Clients call the virtual operations through an element that they were given. The shared library
/// exports only the type information of the element classes. Static operations (`initWithNode`,
/// `initWithTagName`, `elementClass`, every `createElement`), constructors and protected operations
/// are internal: a client that calls one gets a compile error. To create elements a client uses
/// `standard::newElement` (kestrelink/standard/Elements.h) or `standard::elementFromText`
/// (kestrelink/standard/MakeElement.h).
///
/// Threads: an element and all elements of its tree are used by one thread at a time.
class KESTRELINK_TYPE XMLWrapperElement {
 public:
  using List = std::vector<std::shared_ptr<XMLWrapperElement>>;
  /// Attributes by local name, in the order in which they are written out.
  using AttributeMap = std::vector<std::pair<std::string, std::shared_ptr<XMLWrapperAttribute>>>;

  KESTRELINK_INTERNAL static const XMLWrapperElementClass elementClass;

  /// Builds an element of that class, and all below it, from a node of any kind except a namespace
  /// node.
  KESTRELINK_INTERNAL static std::shared_ptr<XMLWrapperElement> initWithNode(
      const XMLWrapperElementClass& asClass, const XmlNodeRef& node,
      const std::shared_ptr<XMLWrapperQuery>& query);

  /// A plain element made in memory, with these namespaces.
  KESTRELINK_INTERNAL static std::shared_ptr<XMLWrapperElement> initWithTagName(
      std::string_view tagName, const NamespaceMap& namespaces = {});

  KESTRELINK_INTERNAL XMLWrapperElement();
  virtual ~XMLWrapperElement();
  XMLWrapperElement(const XMLWrapperElement&) = delete;
  XMLWrapperElement& operator=(const XMLWrapperElement&) = delete;

  /// The local name, without prefix. An undeclared prefix stays part of it. `std::nullopt` for a
  /// document node found by XPath and for a name that is not UTF-8.
  virtual const std::optional<std::string>& tagName() const;
  virtual void setTagName(std::optional<std::string> tagName);

  /// The element's own text: its text nodes, each trimmed of white space at both ends and joined
  /// without a separator. CDATA sections, comments, processing instructions and entity references
  /// are skipped. `std::nullopt` when nothing is left.
  virtual const std::optional<std::string>& textContent() const;
  virtual void setTextContent(std::optional<std::string> textContent);

  virtual const AttributeMap& attributes() const;
  /// The attribute of that local name, or null. Of two attributes with the same local name in
  /// different namespaces only the later is kept.
  virtual std::shared_ptr<XMLWrapperAttribute> attributeWithName(std::string_view name) const;
  /// Replaces the attribute of that name by a new one without a namespace, or adds it.
  virtual void setAttributeWithName(std::string_view name, std::optional<std::string_view> value);
  /// Does nothing when there is none.
  void removeAttributeWithName(std::string_view name) {
    std::erase_if(attributes_, [name](const auto& entry) { return entry.first == name; });
  }

  /// The element's namespace, followed by those declared after it on the same element.
  virtual const NamespaceMap& namespaces() const;
  /// Stores the namespace under its prefix and, for an element that was parsed, registers the
  /// prefix for XPath. Null is ignored.
  virtual void setNamespace(const std::shared_ptr<const XMLWrapperNamespace>& ns);

  /// The list itself, not a copy: changing the element's children invalidates its iterators. To
  /// change children while iterating, iterate over a copy or over `getElementsByTagName`.
  virtual const List& elements() const;
  virtual void setElements(List elements);
  /// The direct children with exactly that local name, in order.
  virtual List getElementsByTagName(std::string_view tagName) const;
  /// The first such child, or null.
  virtual std::shared_ptr<XMLWrapperElement> firstElementByTagName(std::string_view tagName) const;

  /// Appends the element unless it is null or already a child. An element that would become its
  /// own descendant is refused; the log says so.
  virtual void addChildElement(const std::shared_ptr<XMLWrapperElement>& element);
  /// Inserts the element before a child; appends it when `before` is null or no child.
  virtual void addChildElement(const std::shared_ptr<XMLWrapperElement>& element,
                               const std::shared_ptr<XMLWrapperElement>& before);
  virtual void removeChildElement(const std::shared_ptr<XMLWrapperElement>& element);
  /// Replaces the old element by the new one. Does nothing unless the old one is a child and the
  /// new one is neither null nor a child.
  virtual void replaceChildElement(const std::shared_ptr<XMLWrapperElement>& oldElement,
                                   const std::shared_ptr<XMLWrapperElement>& newElement);

  /// The order in which children are written, by tag name; a child with another name is not
  /// written. `std::nullopt`: all children are written, in their own order.
  virtual const std::optional<std::vector<std::string>>& childElementSequence() const;
  virtual void setChildElementSequence(std::optional<std::vector<std::string>> sequence);
  /// Sorts the children into that order and removes children whose name is not in it; without an
  /// order it removes all children.
  virtual void reorderChildElements();

  /// What evaluates XPath on this element. `XMLWrapperQuery` has no public header: a client can
  /// only pass it on, or set it to null, which ends XPath and the registration of prefixes.
  virtual const std::shared_ptr<XMLWrapperQuery>& query() const;
  virtual void setQuery(std::shared_ptr<XMLWrapperQuery> query);

  /// The nodes that the XPath 1.0 expression selects with this element as context, each as a new
  /// element. Prefixes are those of all messages read so far in this process. `std::nullopt`, with
  /// a line in the log, when the expression fails or its result is not a set of nodes;
  /// `std::nullopt` too when the document is destroyed.
  virtual std::optional<List> getResultsByXpathQuery(std::string_view xpath) const;
  /// The first of these elements, or null.
  virtual std::shared_ptr<XMLWrapperElement> firstResultByXpathQuery(std::string_view xpath) const;

  /// A new libxml2 node of the element and its subtree; no node when the tag name is not an XML
  /// name. With a `childElementSequence` it calls `reorderChildElements`. Characters that XML
  /// forbids are written as U+FFFD. An attribute (`kXMLWrapperErrorAttributeNotWritten`) or
  /// namespace (`kXMLWrapperErrorNamespaceNotWritten`) whose name is not an XML name is left out,
  /// as is everything below 1000 levels. For the library alone: `DetachedNode` has no public
  /// header, so a client cannot call it. Use `xmlString`.
  virtual DetachedNode xmlNode(ErrorOut error = nullptr);
  /// The element as indented XML text; the errors of `xmlNode` may be set although it is returned.
  /// `std::nullopt` when there is no node, and with `kXMLWrapperErrorNotWritten` when there is no
  /// memory for the first buffer.
  [[nodiscard]] virtual std::optional<std::string> xmlString(ErrorOut error = nullptr);

  /// The class this element is an instance of.
  virtual const XMLWrapperElementClass& dynamicClass() const;

 protected:
  friend class XMLTreeReading;
  friend class XMLWrapperElementClass;

  /// Fills a new element from a node and all below it.
  virtual void readNode(_xmlNode* node, XMLTreeReading& reading);
  /// Gives a new element made in memory its tag name and namespaces.
  void startWithTagName(std::string_view tagName, const NamespaceMap& namespaces);

 private:
  // The node that the element was read from, without a document once that is destroyed.
  XmlNodeRef nodeRead() const;
  bool isChild(const std::shared_ptr<XMLWrapperElement>& element) const;
  bool adopt(const std::shared_ptr<XMLWrapperElement>& element) const;
  bool holds(const XMLWrapperElement& sought) const;
  bool mayBeChild() const;

  // Kept apart because few elements have it: those made in memory, or changed after reading.
  struct Changes {
    std::optional<std::optional<std::string>> tagName;
    std::optional<NamespaceMap> namespaces;
    std::optional<std::shared_ptr<XMLWrapperQuery>> query;
    std::optional<std::vector<std::string>> childElementSequence;
    // The tag name given at creation in memory: XPath sees an empty node of that name.
    std::optional<std::string> madeAs;
    bool wasAdopted = false;
  };
  Changes& changes();

  std::optional<std::string> textContent_;
  AttributeMap attributes_;
  List elements_;
  const XMLWrapperElementClass* class_;

  // Data read from the tree is shared by its elements, to save memory in large messages.
  std::shared_ptr<XMLTreeReading> reading_;  // null for an element made in memory
  const std::optional<std::string>* readTagName_ = nullptr;
  const NamespaceMap* readNamespaces_ = nullptr;
  _xmlNode* node_ = nullptr;  // in the reading's tree
  std::unique_ptr<Changes> changes_;
};

inline std::shared_ptr<XMLWrapperElement> XMLWrapperElementClass::makeInstance() const {
  std::shared_ptr<XMLWrapperElement> instance = maker_();
  instance->class_ = this;
  return instance;
}

}  // namespace kestrelink
