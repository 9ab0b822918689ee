#include "kestrelink/xml/XMLWrapperElement.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "kestrelink/platform/DiagnosticLog.h"
#include "kestrelink/platform/NoDestructor.h"
#include "kestrelink/xml/XMLWrapperElementFactory.h"
#include "kestrelink/xml/XPathPrefixes.h"

// What an element holds and looks up. Its operations that read are in TreeReader.cpp, those that
// write in TreeWriter.cpp, XPath in XMLWrapperQuery.cpp.

namespace kestrelink {
namespace {

template <class Value>
const Value& none() {
  static const auto& value = noDestructor<Value>();
  return value;
}

}  // namespace

constinit const XMLWrapperElementClass XMLWrapperElement::elementClass{
    "XMLWrapperElement", &makeElementInstance<XMLWrapperElement>};

const XMLWrapperElementClass& plainElementClass() { return XMLWrapperElement::elementClass; }

XMLWrapperElement::XMLWrapperElement() : class_(&elementClass) {}

// Iterative, and without allocating: a client can build a tree of any depth. The list of pending
// elements is stored in the child list of the element being destroyed.
XMLWrapperElement::~XMLWrapperElement() {
  List waiting = std::move(elements_);
  while (!waiting.empty()) {
    std::shared_ptr<XMLWrapperElement> next = std::move(waiting.back());
    waiting.pop_back();
    while (next.use_count() == 1 && !next->elements_.empty()) {
      waiting.swap(next->elements_);
      if (!next->elements_.empty()) next.swap(waiting.front());
    }
  }
}

const XMLWrapperElementClass& XMLWrapperElement::dynamicClass() const { return *class_; }

// Making in memory

std::shared_ptr<XMLWrapperElement> XMLWrapperElement::initWithTagName(
    std::string_view tagName, const NamespaceMap& namespaces) {
  auto element = std::make_shared<XMLWrapperElement>();
  element->startWithTagName(tagName, namespaces);
  return element;
}

void XMLWrapperElement::startWithTagName(std::string_view tagName, const NamespaceMap& namespaces) {
  changes().tagName = tagName;
  changes().madeAs = tagName;
  changes().namespaces = namespaces;
}

// Properties

XMLWrapperElement::Changes& XMLWrapperElement::changes() {
  if (!changes_) changes_ = std::make_unique<Changes>();
  return *changes_;
}

const std::optional<std::string>& XMLWrapperElement::tagName() const {
  if (changes_ && changes_->tagName) return *changes_->tagName;
  return readTagName_ != nullptr ? *readTagName_ : none<std::optional<std::string>>();
}
void XMLWrapperElement::setTagName(std::optional<std::string> tagName) {
  changes().tagName = std::move(tagName);
}

const std::optional<std::string>& XMLWrapperElement::textContent() const { return textContent_; }
void XMLWrapperElement::setTextContent(std::optional<std::string> textContent) {
  textContent_ = std::move(textContent);
}

const std::optional<std::vector<std::string>>& XMLWrapperElement::childElementSequence() const {
  return changes_ ? changes_->childElementSequence
                  : none<std::optional<std::vector<std::string>>>();
}
void XMLWrapperElement::setChildElementSequence(std::optional<std::vector<std::string>> sequence) {
  changes().childElementSequence = std::move(sequence);
}

void XMLWrapperElement::setQuery(std::shared_ptr<XMLWrapperQuery> query) {
  changes().query = std::move(query);
}

// Attributes and namespaces

const XMLWrapperElement::AttributeMap& XMLWrapperElement::attributes() const { return attributes_; }

std::shared_ptr<XMLWrapperAttribute> XMLWrapperElement::attributeWithName(
    std::string_view name) const {
  const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                  [name](const auto& entry) { return entry.first == name; });
  return found == attributes_.end() ? nullptr : found->second;
}

void XMLWrapperElement::setAttributeWithName(std::string_view name,
                                             std::optional<std::string_view> value) {
  auto attribute = std::make_shared<XMLWrapperAttribute>();
  attribute->setName(std::string(name));
  if (value) attribute->setValue(std::string(*value));
  const auto earlier = std::find_if(attributes_.begin(), attributes_.end(),
                                    [name](const auto& entry) { return entry.first == name; });
  if (earlier != attributes_.end()) {
    earlier->second = std::move(attribute);
  } else {
    if (attributes_.empty()) attributes_.reserve(4);
    attributes_.emplace_back(name, std::move(attribute));
  }
}

const NamespaceMap& XMLWrapperElement::namespaces() const {
  if (changes_ && changes_->namespaces) return *changes_->namespaces;
  return readNamespaces_ != nullptr ? *readNamespaces_ : none<NamespaceMap>();
}

void XMLWrapperElement::setNamespace(const std::shared_ptr<const XMLWrapperNamespace>& ns) {
  if (!ns) return;
  // Register first: `ns` may refer to an entry of the list that is replaced below.
  if (query()) bindXPathPrefixes({ns.get()});
  NamespaceMap changed = namespaces();
  changed.set(ns);
  changes().namespaces = std::move(changed);
}

// Children

const XMLWrapperElement::List& XMLWrapperElement::elements() const { return elements_; }

void XMLWrapperElement::setElements(List elements) {
  std::erase_if(elements, [this](const auto& element) { return !adopt(element); });
  elements_ = std::move(elements);
}

XMLWrapperElement::List XMLWrapperElement::getElementsByTagName(std::string_view tagName) const {
  const auto isCalled = [tagName](const auto& child) { return child->tagName() == tagName; };
  List found;
  found.reserve(
      static_cast<std::size_t>(std::count_if(elements_.begin(), elements_.end(), isCalled)));
  std::copy_if(elements_.begin(), elements_.end(), std::back_inserter(found), isCalled);
  return found;
}

std::shared_ptr<XMLWrapperElement> XMLWrapperElement::firstElementByTagName(
    std::string_view tagName) const {
  const auto found = std::find_if(elements_.begin(), elements_.end(), [tagName](const auto& child) {
    return child->tagName() == tagName;
  });
  return found == elements_.end() ? nullptr : *found;
}

bool XMLWrapperElement::isChild(const std::shared_ptr<XMLWrapperElement>& element) const {
  if (!element || !element->mayBeChild()) return false;
  return std::find(elements_.begin(), elements_.end(), element) != elements_.end();
}

bool XMLWrapperElement::adopt(const std::shared_ptr<XMLWrapperElement>& element) const {
  if (!element) return false;
  if (element->holds(*this)) {
    logDiagnostic("An element cannot be added below itself");
    return false;
  }
  if (!element->mayBeChild()) element->changes().wasAdopted = true;
  return true;
}

// Visits each element once, even when it has several parents.
bool XMLWrapperElement::holds(const XMLWrapperElement& sought) const {
  if (this == &sought) return true;
  if (elements_.empty() || !sought.mayBeChild()) return false;
  std::vector<const XMLWrapperElement*> unseen = {this};
  std::unordered_set<const XMLWrapperElement*> seen;
  while (!unseen.empty()) {
    const XMLWrapperElement* const element = unseen.back();
    unseen.pop_back();
    for (const auto& child : element->elements_) {
      if (child.get() == &sought) return true;
      if (!child->elements_.empty() && seen.insert(child.get()).second) {
        unseen.push_back(child.get());
      }
    }
  }
  return false;
}

void XMLWrapperElement::addChildElement(const std::shared_ptr<XMLWrapperElement>& element) {
  if (isChild(element) || !adopt(element)) return;
  if (elements_.empty()) elements_.reserve(4);
  elements_.push_back(element);
}

void XMLWrapperElement::addChildElement(const std::shared_ptr<XMLWrapperElement>& element,
                                        const std::shared_ptr<XMLWrapperElement>& before) {
  if (isChild(element) || !adopt(element)) return;
  elements_.insert(std::find(elements_.begin(), elements_.end(), before), element);
}

void XMLWrapperElement::removeChildElement(const std::shared_ptr<XMLWrapperElement>& element) {
  // Compare with a raw pointer: `element` may refer to the entry that is erased.
  const XMLWrapperElement* const removed = element.get();
  std::erase_if(elements_, [removed](const auto& child) { return child.get() == removed; });
}

void XMLWrapperElement::replaceChildElement(const std::shared_ptr<XMLWrapperElement>& oldElement,
                                            const std::shared_ptr<XMLWrapperElement>& newElement) {
  if (isChild(newElement)) return;
  const auto place = std::find(elements_.begin(), elements_.end(), oldElement);
  if (place != elements_.end() && adopt(newElement)) *place = newElement;
}

}  // namespace kestrelink
