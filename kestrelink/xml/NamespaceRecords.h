#pragma once

#include <cstdint>
#include <forward_list>
#include <memory>
#include <memory_resource>
#include <unordered_map>
#include <vector>

#include "kestrelink/xml/NamespaceMap.h"

struct _xmlNs;

namespace kestrelink {

class XMLWrapperQuery;

/// The namespace records of one parse tree while it is read. Each is read once, however many
/// elements and attributes refer to it.
class NamespaceRecords {
 public:
  explicit NamespaceRecords(std::pmr::memory_resource& memory)
      : lists_(&memory), positions_(&memory) {}

  /// What an element in that namespace records: its own record and those that follow it in the
  /// `next` links, not the element's declarations. Null for null. Lives as long as this object.
  const NamespaceMap* recordedFrom(const _xmlNs* own);

  /// The namespace of an attribute; null for null.
  NamespaceMap::Entry namespaceOf(const _xmlNs* record);

  /// Registers what the elements recorded. Of two bindings of a prefix the one read last is
  /// registered, as if each element had registered its own.
  void registerWith(XMLWrapperQuery& query) const;

 private:
  struct List {
    std::shared_ptr<NamespaceMap::ReversedList> entries =
        std::make_shared<NamespaceMap::ReversedList>();
    std::vector<std::uint64_t> lastRecordedAt;  // by length; 0 is never
  };
  struct Position {
    List* list;
    std::size_t length;  // of the suffix that begins with the record
    NamespaceMap recorded;
  };

  Position& locate(const _xmlNs* record);

  std::pmr::forward_list<List> lists_;
  std::pmr::unordered_map<const _xmlNs*, Position> positions_;
  std::uint64_t recordings_ = 0;
};

}  // namespace kestrelink
