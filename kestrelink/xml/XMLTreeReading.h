#pragma once

#include <cstddef>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "kestrelink/xml/NamespaceRecords.h"
#include "kestrelink/xml/XMLWrapperElement.h"
#include "kestrelink/xml/libxml/LibxmlHandles.h"

namespace kestrelink {

/// One walk over a parse tree, and the data that the elements it made share. It lives as long as
/// any of them.
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

  std::shared_ptr<XMLWrapperElement> read(const XMLWrapperElementClass& elementClass,
                                          _xmlNode* node);

  /// The node's name and the class registered for it, looked up once per name. libxml2 keeps one
  /// copy of each name, so the address identifies it.
  const Name& nameOf(const _xmlNode& node);

  /// An attribute to fill in.
  std::shared_ptr<XMLWrapperAttribute> newAttribute();

  const std::weak_ptr<_xmlDoc> tree;  // weak: elements do not keep the tree alive
  const std::shared_ptr<XMLWrapperQuery> query;
  NamespaceRecords namespaces{memory_};

 private:
  std::pmr::unordered_map<const unsigned char*, Name> names_{&memory_};
  // Attributes are allocated in blocks. A block is freed with its last attribute.
  static constexpr std::size_t kAttributesAtOnce = 8;
  std::shared_ptr<XMLWrapperAttribute[]> attributes_;
  std::size_t attributesUsed_ = kAttributesAtOnce;
};

}  // namespace kestrelink
