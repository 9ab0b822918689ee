#pragma once

#include <cstddef>
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
  using Iterator = std::vector<Entry>::const_reverse_iterator;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  /// The entry at a position of the order.
  const Entry& at(std::size_t position) const { return (*list_)[size_ - 1 - position]; }

  /// The entries in their order; valid until the map is changed.
  Iterator begin() const { return list_ ? Iterator(list_->cbegin() + length()) : Iterator(); }
  Iterator end() const { return list_ ? Iterator(list_->cbegin()) : Iterator(); }

  /// The namespace of that prefix (`std::nullopt`: the default namespace), or null.
  Entry find(const std::optional<std::string>& prefix) const {
    for (std::size_t position = 0; position < size_; ++position) {
      if (at(position)->prefix() == prefix) return at(position);
    }
    return nullptr;
  }

  /// Puts a namespace of another prefix before all others. A copy made before it shares its entries
  /// with the longer map.
  void putFirst(Entry ns) {
    if (!list_ || list_->size() != size_) list_ = copy();
    list_->push_back(std::move(ns));
    ++size_;
  }

  /// Stores the namespace under its prefix: in the place of an earlier one, or else as the last.
  void set(const Entry& ns) {
    auto changed = copy();
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
  // Last entry first: the elements of a parse tree record the ends of a few lists. So they share
  // each list and store only a length, however many declarations there are.
  using ReversedList = std::vector<Entry>;

  std::ptrdiff_t length() const { return static_cast<std::ptrdiff_t>(size_); }

  std::shared_ptr<ReversedList> copy() const {
    auto list = std::make_shared<ReversedList>();
    if (list_) list->assign(list_->begin(), list_->begin() + length());
    return list;
  }

  std::shared_ptr<ReversedList> list_;  // entries beyond the length belong to longer maps
  std::size_t size_ = 0;
};

}  // namespace kestrelink
