#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "kestrelink/platform/Export.h"
#include "kestrelink/xml/ErrorInfo.h"
#include "kestrelink/xml/XMLWrapperNamespace.h"

struct _xmlAttr;

namespace kestrelink {

class DetachedNode;

/// One attribute of an element. It may outlive its element and document.
class XMLWrapperAttribute {
 public:
  XMLWrapperAttribute() = default;

  /// Reads a libxml2 attribute. The value is its first text node: it ends at the first entity
  /// reference. `ns` is the attribute's namespace, null when it has none.
  KESTRELINK_NOT_EXPORTED("use setAttributeWithName or standard::setAttribute")
  static std::shared_ptr<XMLWrapperAttribute> initWithNode(
      const _xmlAttr* record, std::shared_ptr<const XMLWrapperNamespace> ns);

  /// The same, into an existing attribute.
  KESTRELINK_NOT_EXPORTED("use setAttributeWithName or standard::setAttribute")
  void readNode(const _xmlAttr* record, std::shared_ptr<const XMLWrapperNamespace> ns);

  /// The local name, without prefix.
  const std::string& name() const { return name_; }
  void setName(std::string name) { name_ = std::move(name); }

  const std::optional<std::string>& value() const { return value_; }
  void setValue(std::optional<std::string> value) { value_ = std::move(value); }

  /// Null for an attribute in no namespace.
  const std::shared_ptr<const XMLWrapperNamespace>& ns() const { return ns_; }
  void setNs(std::shared_ptr<const XMLWrapperNamespace> ns) { ns_ = std::move(ns); }

  /// The declared type as libxml2 numbers them (1 CDATA, 2 ID, ... 10 NOTATION); 0 for none.
  std::int32_t type() const { return type_; }
  void setType(std::int32_t type) { type_ = type; }

  /// Adds the attribute to the node. False with `kXMLWrapperErrorAttributeNotWritten` when libxml2
  /// refuses. A namespace that cannot be written leaves `kXMLWrapperErrorNamespaceNotWritten`; the
  /// attribute is then written without it.
  KESTRELINK_NOT_EXPORTED("use setAttributeWithName or standard::setAttribute")
  bool xmlAttrNodeForNode(DetachedNode& node, ErrorOut error = nullptr) const;

 private:
  std::string name_;
  std::optional<std::string> value_;
  std::shared_ptr<const XMLWrapperNamespace> ns_;
  std::int32_t type_ = 0;
};

}  // namespace kestrelink
