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

/// One walk over a parse tree, and what all the elements it made have in common; it lives as long
/// as one of them.
class XMLTreeReading : public std::enable_shared_from_this<XMLTreeReading> {
 private:
  // Few small things that all go at once.
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

  /// The node's name and the class registered for it, looked up once a name: libxml2 keeps one copy
  /// of each, so it is known by its address.
  const Name& nameOf(const _xmlNode& node);

  /// An attribute to fill in.
  std::shared_ptr<XMLWrapperAttribute> newAttribute();

  const std::weak_ptr<_xmlDoc> tree;  // never kept alive, never touched when gone
  const std::shared_ptr<XMLWrapperQuery> query;
  NamespaceRecords namespaces{memory_};

 private:
  std::pmr::unordered_map<const unsigned char*, Name> names_{&memory_};
  // Several attributes are one allocation, which goes when the last of them does.
  static constexpr std::size_t kAttributesAtOnce = 8;
  std::shared_ptr<XMLWrapperAttribute[]> attributes_;
  std::size_t attributesUsed_ = kAttributesAtOnce;
};

}  // namespace kestrelink
