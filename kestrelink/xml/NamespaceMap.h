#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrelink/xml/XMLWrapperNamespace.h"

namespace kestrelink {

/// The namespaces of one element by prefix, in the order in which they are written out. Copies
/// share their entries until one of them is changed.
class NamespaceMap {
 public:
  using Entry = std::shared_ptr<const XMLWrapperNamespace>;
  /// A list, last entry first. The elements of a parse tree record suffixes of few lists. They
  /// share the lists and store a length each, so many declarations cost an element nothing.
  using ReversedList = std::vector<Entry>;

  NamespaceMap() = default;
  NamespaceMap(std::shared_ptr<const ReversedList> list, std::size_t size)
      : list_(std::move(list)), size_(size) {}

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  /// The entry at a position of the order.
  const Entry& at(std::size_t position) const { return (*list_)[size_ - 1 - position]; }

  /// The namespace of that prefix (`std::nullopt`: the default namespace), or null.
  Entry find(const std::optional<std::string>& prefix) const {
    for (std::size_t position = 0; position < size_; ++position) {
      if (at(position)->prefix() == prefix) return at(position);
    }
    return nullptr;
  }

  /// Stores the namespace under its prefix: replaces an earlier one, or else is added last.
  void set(const Entry& ns) {
    auto changed = std::make_shared<ReversedList>();
    if (list_) changed->assign(list_->begin(), list_->begin() + static_cast<std::ptrdiff_t>(size_));
    bool replaced = false;
    for (Entry& entry : *changed) {
      if (entry->prefix() != ns->prefix()) continue;
      entry = ns;
      replaced = true;
    }
    if (!replaced) changed->insert(changed->begin(), ns);
    size_ = changed->size();
    list_ = std::move(changed);
  }

 private:
  std::shared_ptr<const ReversedList> list_;
  std::size_t size_ = 0;
};

}  // namespace kestrelink
