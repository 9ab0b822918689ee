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

/// An XML element: read from a parsed message, or made in memory for a message to be written. It is
/// the base of every SAML element class.
///
///     for (const auto& nameId : subject->getElementsByTagName("NameID")) {
///       use(nameId->textContent());
///     }
///
/// An element keeps copies of what it was read from: it stays readable and writable when its
/// document is gone; only XPath look-ups then answer absent. Changes reach written XML, never the
/// tree the element was read from, nor XPath.
///
/// What a client can call: the virtual operations, through an element that it was given. The shared
/// library exports nothing else of the element classes but their type information, so that static
/// operations (`initWithNode`, `initWithTagName`, `elementClass`, every `createElement`),
/// constructors and protected operations are the library's own: a client that calls one has an
/// undefined reference. It makes elements with `standard::elementFromText`
/// (kestrelink/standard/MakeElement.h).
///
/// Threads: an element and all elements of its tree are used by one thread at a time.
class KESTRELINK_TYPE XMLWrapperElement {
 public:
  using List = std::vector<std::shared_ptr<XMLWrapperElement>>;
  /// Attributes by local name, in the order in which they are written out.
  using AttributeMap = std::vector<std::pair<std::string, std::shared_ptr<XMLWrapperAttribute>>>;

  static const XMLWrapperElementClass elementClass;

  /// Builds an element of that class, and all below it, from a node of any kind but a namespace
  /// node, which is no part of the tree.
  static std::shared_ptr<XMLWrapperElement> initWithNode(
      const XMLWrapperElementClass& asClass, const XmlNodeRef& node,
      const std::shared_ptr<XMLWrapperQuery>& query);

  /// A plain element made in memory.
  static std::shared_ptr<XMLWrapperElement> initWithTagName(std::string_view tagName);

  XMLWrapperElement();
  virtual ~XMLWrapperElement();
  XMLWrapperElement(const XMLWrapperElement&) = delete;
  XMLWrapperElement& operator=(const XMLWrapperElement&) = delete;

  /// The local name, without prefix (a prefix that nobody declared stays part of it); absent for a
  /// document node found by XPath and for a name that is not UTF-8.
  virtual const std::optional<std::string>& tagName() const;
  virtual void setTagName(std::optional<std::string> tagName);

  /// The element's own text: its text nodes, each trimmed of white space at both ends and joined
  /// without a separator. CDATA sections, comments, processing instructions and entity references
  /// are passed over. Absent when nothing is left.
  virtual const std::optional<std::string>& textContent() const;
  virtual void setTextContent(std::optional<std::string> textContent);

  virtual const AttributeMap& attributes() const;
  /// The attribute of that local name, or null. Of two attributes that share a local name in
  /// different namespaces only the later is kept.
  virtual std::shared_ptr<XMLWrapperAttribute> attributeWithName(std::string_view name) const;
  /// Replaces the attribute of that name by a new one in no namespace, or adds it.
  virtual void setAttributeWithName(std::string_view name, std::optional<std::string_view> value);

  /// The namespace the element is in, followed by those declared after it in the same place.
  virtual const NamespaceMap& namespaces() const;
  /// Stores the namespace under its prefix and, for an element that was parsed, makes the prefix
  /// known to XPath. Null is ignored.
  virtual void setNamespace(const std::shared_ptr<const XMLWrapperNamespace>& ns);

  /// The list itself, not a copy: what changes the element's children ends any walk over it. Walk
  /// over a copy, or over `getElementsByTagName`, to change them on the way.
  virtual const List& elements() const;
  virtual void setElements(List elements);
  /// The direct children of exactly that local name, in order.
  virtual List getElementsByTagName(std::string_view tagName) const;
  /// The first of them, or null.
  virtual std::shared_ptr<XMLWrapperElement> firstElementByTagName(std::string_view tagName) const;

  /// Appends the element unless it is null or already a child. An element that would become its
  /// own descendant is refused; the log says so.
  virtual void addChildElement(const std::shared_ptr<XMLWrapperElement>& element);
  /// Inserts the element before a child; appends it when `before` is null or no child.
  virtual void addChildElement(const std::shared_ptr<XMLWrapperElement>& element,
                               const std::shared_ptr<XMLWrapperElement>& before);
  virtual void removeChildElement(const std::shared_ptr<XMLWrapperElement>& element);
  /// Puts the new element in the old one's place, when the old one is a child and the new one is
  /// present and none.
  virtual void replaceChildElement(const std::shared_ptr<XMLWrapperElement>& oldElement,
                                   const std::shared_ptr<XMLWrapperElement>& newElement);

  /// The order in which children are written, by tag name: a child with another name is not
  /// written. Absent for no such order.
  virtual const std::optional<std::vector<std::string>>& childElementSequence() const;
  virtual void setChildElementSequence(std::optional<std::vector<std::string>> sequence);
  /// Brings the children into that order, for good. Children without a place in it are dropped.
  virtual void reorderChildElements();

  virtual const std::shared_ptr<XMLWrapperQuery>& query() const;
  virtual void setQuery(std::shared_ptr<XMLWrapperQuery> query);

  /// What the XPath 1.0 expression selects with this element as context, each node as a new
  /// element. Prefixes are those of all messages read so far in this process. Absent, with a line
  /// in the log, when the expression fails or selects no nodes by its type; absent too when the
  /// document is gone.
  virtual std::optional<List> getResultsByXpathQuery(std::string_view xpath) const;
  /// The first of them, or null.
  virtual std::shared_ptr<XMLWrapperElement> firstResultByXpathQuery(std::string_view xpath) const;

  /// A new libxml2 node with its subtree, as the element is now; absent when the tag name is no XML
  /// name. Brings the children into their order, for good. Characters that XML forbids are written
  /// as U+FFFD; an attribute (code 204) or namespace (code 205) whose name is no XML name is not
  /// written, nor is what lies more than 1000 levels deep.
  virtual DetachedNode xmlNode(ErrorOut error = nullptr);
  /// The element as indented XML text. Codes 204 and 205 as above may stay though it is written;
  /// absent, with code 101 of "XMLWrapperErrorDomain" when no
  /// buffer could be made.
  virtual std::optional<std::string> xmlString(ErrorOut error = nullptr);

  /// The class this element is an instance of.
  virtual const XMLWrapperElementClass& dynamicClass() const;

 protected:
  friend class XMLTreeReading;
  friend class XMLWrapperElementClass;

  /// Fills a new element from a node.
  virtual void readNode(_xmlNode* node, XMLTreeReading& reading);
  /// Makes a new element one made in memory.
  void startWithTagName(std::string_view tagName);

 private:
  void readAttributes(const _xmlNode* node, XMLTreeReading& reading);
  void readChildren(const _xmlNode* node, XMLTreeReading& reading);
  void appendText(std::string_view text);
  void storeAttribute(std::string_view name, std::shared_ptr<XMLWrapperAttribute> attribute);
  bool isChild(const std::shared_ptr<XMLWrapperElement>& element) const;
  bool mayAdopt(const std::shared_ptr<XMLWrapperElement>& element) const;
  bool holds(const XMLWrapperElement& sought) const;

  // What few elements have to themselves: those made in memory, and those read and then changed.
  struct Own {
    std::optional<std::string> tagName;
    NamespaceMap namespaces;
    std::shared_ptr<XMLWrapperQuery> query;
    std::optional<std::vector<std::string>> childElementSequence;
    // The name an element made in memory was made with: XPath sees an empty node of that name.
    std::optional<std::string> madeAs;
  };
  Own& own();

  std::optional<std::string> textContent_;
  AttributeMap attributes_;
  List elements_;
  const XMLWrapperElementClass* class_ = &elementClass;

  // What was read lies in the reading, which all its elements share: large messages have many.
  std::shared_ptr<XMLTreeReading> reading_;  // null for an element made in memory
  const std::optional<std::string>* readTagName_ = nullptr;
  const NamespaceMap* readNamespaces_ = nullptr;
  _xmlNode* node_ = nullptr;  // in the reading's tree
  std::unique_ptr<Own> own_;
};

}  // namespace kestrelink
