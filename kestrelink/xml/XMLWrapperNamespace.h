#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "kestrelink/platform/Export.h"

struct _xmlNode;
struct _xmlNs;

namespace kestrelink {

struct ErrorInfo;

/// One namespace binding: a URI and its prefix. A default namespace has no prefix.
class XMLWrapperNamespace {
 public:
  XMLWrapperNamespace() = default;
  XMLWrapperNamespace(std::optional<std::string> prefix, std::optional<std::string> href)
      : prefix_(std::move(prefix)), href_(std::move(href)) {}

  /// Reads a libxml2 namespace record.
  KESTRELINK_NOT_EXPORTED("use the constructor")
  static std::shared_ptr<XMLWrapperNamespace> initWithNsNode(const _xmlNs* record);

  const std::optional<std::string>& prefix() const { return prefix_; }
  void setPrefix(std::optional<std::string> prefix) { prefix_ = std::move(prefix); }

  const std::optional<std::string>& href() const { return href_; }
  void setHref(std::optional<std::string> href) { href_ = std::move(href); }

  /// Declares the namespace on a node, which then owns the record. Without a node the caller owns
  /// the record. Null with `kXMLWrapperErrorNamespaceNotWritten` when it cannot be declared, as for
  /// a prefix that the node already declares.
  KESTRELINK_NOT_EXPORTED("use the constructor")
  _xmlNs* xmlNsForNode(_xmlNode* node, std::optional<ErrorInfo>* error = nullptr) const;

 private:
  std::optional<std::string> prefix_;
  std::optional<std::string> href_;
};

}  // namespace kestrelink
