#include "kestrelink/xml/TreeReader.h"

#include <algorithm>
#include <cstddef>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <libxml/tree.h>

#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/platform/Text.h"
#include "kestrelink/xml/NamespaceRecords.h"
#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XPathPrefixes.h"
#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {

/// What the elements of one reader share. It lives as long as any of them.
class XMLTreeReading : public std::enable_shared_from_this<XMLTreeReading> {
 private:
  // Arena for small objects freed together.
  std::pmr::monotonic_buffer_resource memory_{512};

 public:
  struct Name {
    std::optional<std::string> text;
    const XMLWrapperElementClass* elementClass;
  };

  XMLTreeReading(const SharedXmlDoc& doc, std::shared_ptr<XMLWrapperQuery> ofDoc)
      : tree(doc), query(std::move(ofDoc)) {}

  std::shared_ptr<XMLWrapperElement> read(xmlNode* node, const XMLWrapperElementClass& asClass) {
    std::shared_ptr<XMLWrapperElement> element = asClass.makeInstance();
    element->readNode(node, *this);
    return element;
  }
  std::shared_ptr<XMLWrapperElement> read(xmlNode* node) {
    return read(node, *nameOf(*node).elementClass);
  }

  /// The node's name and the class registered for it, looked up once per name. libxml2 keeps one
  /// copy of each name, so the address identifies it.
  const Name& nameOf(const xmlNode& node);

  /// An attribute to fill in.
  std::shared_ptr<XMLWrapperAttribute> newAttribute();

  const std::weak_ptr<xmlDoc> tree;  // weak: elements do not keep the tree alive
  const std::shared_ptr<XMLWrapperQuery> query;
  // The latest element that was not read as a child. Only compared: it may be gone.
  const XMLWrapperElement* latestRoot = nullptr;
  NamespaceRecords namespaces{memory_};

 private:
  std::pmr::unordered_map<const xmlChar*, Name> names_{&memory_};
  // Attributes are allocated in blocks. A block is freed with its last attribute.
  static constexpr std::size_t kAttributesAtOnce = 8;
  std::shared_ptr<XMLWrapperAttribute[]> attributes_;
  std::size_t attributesUsed_ = kAttributesAtOnce;
};

const XMLTreeReading::Name& XMLTreeReading::nameOf(const xmlNode& node) {
  const auto known = names_.find(node.name);
  if (known != names_.end()) return known->second;
  const auto& factory = XMLWrapperElementFactory::sharedInstance();
  return names_.emplace(node.name, Name{textOf(node.name), &factory.classForXMLNode(&node)})
      .first->second;
}

std::shared_ptr<XMLWrapperAttribute> XMLTreeReading::newAttribute() {
  if (attributesUsed_ == kAttributesAtOnce) {
    attributes_ = std::make_shared<XMLWrapperAttribute[]>(kAttributesAtOnce);
    attributesUsed_ = 0;
  }
  return {attributes_, attributes_.get() + attributesUsed_++};
}

namespace {

// Counts matching records of a libxml2 list, so that a vector can be reserved in one allocation.
template <class Record, class Counts>
std::size_t lengthOf(const Record* first, Counts counts) {
  std::size_t length = 0;
  for (const Record* record = first; record != nullptr; record = record->next) {
    if (counts(*record)) ++length;
  }
  return length;
}

// Finds attributes by name in a list while it grows: linearly in a short list, by a hash table in a
// long one.
class AttributePlaces {
 public:
  using Map = XMLWrapperElement::AttributeMap;

  AttributePlaces(Map& attributes, std::size_t atMost)
      : attributes_(attributes), isLong_(atMost > 16) {}

  std::shared_ptr<XMLWrapperAttribute>* find(std::string_view name) {
    if (isLong_) {
      const auto [place, isNew] = places_.try_emplace(std::string(name), attributes_.size());
      return isNew ? nullptr : &attributes_[place->second].second;
    }
    const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                    [name](const auto& entry) { return entry.first == name; });
    return found == attributes_.end() ? nullptr : &found->second;
  }

 private:
  Map& attributes_;
  const bool isLong_;
  std::unordered_map<std::string, std::size_t> places_;
};

void readAttributes(const xmlNode& node, XMLTreeReading& reading,
                    XMLWrapperElement::AttributeMap& attributes) {
  const std::size_t count = lengthOf(node.properties, [](const xmlAttr&) { return true; });
  attributes.reserve(count);
  AttributePlaces places(attributes, count);
  for (const xmlAttr* record = node.properties; record != nullptr; record = record->next) {
    const std::string_view name = viewOf(record->name);
    if (!isUtf8(name)) continue;
    std::shared_ptr<XMLWrapperAttribute> attribute = reading.newAttribute();
    attribute->readNode(record, reading.namespaces.namespaceOf(record->ns));
    // Of two attributes with the same local name in different namespaces the later one is kept.
    if (std::shared_ptr<XMLWrapperAttribute>* const earlier = places.find(name)) {
      *earlier = std::move(attribute);
    } else {
      attributes.emplace_back(std::string(name), std::move(attribute));
    }
  }
}

void appendText(std::string_view added, std::optional<std::string>& text) {
  if (added.empty()) return;
  if (text) {
    text->append(added);
  } else {
    text.emplace(added);  // without the room that appending would add
  }
}

void readChildren(const xmlNode& node, XMLTreeReading& reading, std::optional<std::string>& text,
                  XMLWrapperElement::List& elements) {
  elements.reserve(
      lengthOf(node.children, [](const xmlNode& child) { return child.type == XML_ELEMENT_NODE; }));
  for (xmlNode* child = node.children; child != nullptr; child = child->next) {
    if (child->type == XML_TEXT_NODE) {
      const std::string_view content = viewOf(child->content);
      if (isUtf8(content)) appendText(trimmed(content), text);
    } else if (child->type == XML_ELEMENT_NODE) {
      elements.push_back(reading.read(child));
    }
  }
}

}  // namespace

TreeReader::TreeReader(const SharedXmlDoc& tree, std::shared_ptr<XMLWrapperQuery> query)
    : reading_(std::make_shared<XMLTreeReading>(tree, std::move(query))) {}

std::shared_ptr<XMLWrapperElement> TreeReader::read(xmlNode* node,
                                                    const XMLWrapperElementClass& asClass) {
  std::shared_ptr<XMLWrapperElement> element = reading_->read(node, asClass);
  reading_->latestRoot = element.get();
  return element;
}

std::shared_ptr<XMLWrapperElement> TreeReader::read(xmlNode* node) {
  return read(node, *reading_->nameOf(*node).elementClass);
}

std::vector<const XMLWrapperNamespace*> TreeReader::prefixes() const {
  return reading_->namespaces.latestBindings();
}

// Operations of attributes and elements that read

std::shared_ptr<XMLWrapperAttribute> XMLWrapperAttribute::initWithNode(
    const xmlAttr* record, std::shared_ptr<const XMLWrapperNamespace> ns) {
  auto attribute = std::make_shared<XMLWrapperAttribute>();
  attribute->readNode(record, std::move(ns));
  return attribute;
}

void XMLWrapperAttribute::readNode(const xmlAttr* record,
                                   std::shared_ptr<const XMLWrapperNamespace> ns) {
  name_ = viewOf(record->name);
  type_ = static_cast<std::int32_t>(record->atype);
  ns_ = std::move(ns);
  const xmlNode* const first = record->children;
  if (first != nullptr && first->type == XML_TEXT_NODE) value_ = textOf(first->content);
}

std::shared_ptr<XMLWrapperElement> XMLWrapperElement::initWithNode(
    const XMLWrapperElementClass& asClass, const XmlNodeRef& node,
    const std::shared_ptr<XMLWrapperQuery>& query) {
  TreeReader reader(node.doc, query);
  std::shared_ptr<XMLWrapperElement> element = reader.read(node.node, asClass);
  if (query) bindXPathPrefixes(reader.prefixes());
  return element;
}

// XPath results are nodes of every kind, all typed as xmlNode. Only fields that the kind has are
// read.
void XMLWrapperElement::readNode(::xmlNode* node, XMLTreeReading& reading) {
  node_ = node;
  reading_ = reading.shared_from_this();
  readTagName_ = &reading.nameOf(*node).text;

  const bool isElement = node->type == XML_ELEMENT_NODE;
  const bool isAttribute = node->type == XML_ATTRIBUTE_NODE;
  if (isElement || isAttribute) readNamespaces_ = reading.namespaces.recordedFrom(node->ns);
  if (isElement) readAttributes(*node, reading, attributes_);
  if (isElement || isAttribute || node->type == XML_DOCUMENT_NODE) {
    readChildren(*node, reading, textContent_, elements_);
  }
}

// False only for an element made in memory, or read for itself, that was never added to another.
bool XMLWrapperElement::mayBeChild() const {
  return (reading_ && reading_->latestRoot != this) || (changes_ && changes_->wasAdopted);
}

XmlNodeRef XMLWrapperElement::nodeRead() const {
  return {reading_ ? reading_->tree.lock() : nullptr, node_};
}

const std::shared_ptr<XMLWrapperQuery>& XMLWrapperElement::query() const {
  static const auto& none = noDestructor<std::shared_ptr<XMLWrapperQuery>>();
  if (changes_ && changes_->query) return *changes_->query;
  return reading_ ? reading_->query : none;
}

}  // namespace kestrelink
