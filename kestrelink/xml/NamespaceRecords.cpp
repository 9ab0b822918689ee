#include "kestrelink/xml/NamespaceRecords.h"

#include <algorithm>
#include <map>
#include <string_view>

#include <libxml/tree.h>

#include "kestrelink/xml/XMLWrapperQuery.h"

namespace kestrelink {

NamespaceRecords::Position& NamespaceRecords::locate(const xmlNs* record) {
  if (const auto known = positions_.find(record); known != positions_.end()) return known->second;

  // Up to the first known record, or to the end of a new list.
  std::vector<const xmlNs*> unknown;
  List* list = nullptr;
  for (const xmlNs* next = record; next != nullptr && list == nullptr; next = next->next) {
    const auto known = positions_.find(next);
    if (known != positions_.end()) {
      list = known->second.list;
    } else {
      unknown.push_back(next);
    }
  }
  if (list == nullptr) list = &lists_.emplace_front();

  std::for_each(unknown.rbegin(), unknown.rend(), [&](const xmlNs* last) {
    list->entries->push_back(XMLWrapperNamespace::initWithNsNode(last));
    list->lastRecordedAt.push_back(0);
    positions_.emplace(last, Position{list, list->entries->size(), {}});
  });
  return positions_.at(record);
}

const NamespaceMap* NamespaceRecords::recordedFrom(const xmlNs* own) {
  if (own == nullptr) return nullptr;
  Position& position = locate(own);
  position.list->lastRecordedAt[position.length - 1] = ++recordings_;
  if (position.recorded.empty()) position.recorded = {position.list->entries, position.length};
  return &position.recorded;
}

NamespaceMap::Entry NamespaceRecords::namespaceOf(const xmlNs* record) {
  if (record == nullptr) return nullptr;
  const Position& position = locate(record);
  return (*position.list->entries)[position.length - 1];
}

void NamespaceRecords::registerWith(XMLWrapperQuery& query) const {
  struct Binding {
    std::uint64_t recordedAt;
    const XMLWrapperNamespace* ns;
  };
  std::map<std::string_view, Binding> bindings;
  for (const auto& list : lists_) {
    std::uint64_t recordedAt = 0;
    for (std::size_t length = list.entries->size(); length > 0; --length) {
      // A record is recorded with every suffix that begins at it or before it.
      recordedAt = std::max(recordedAt, list.lastRecordedAt[length - 1]);
      const XMLWrapperNamespace& ns = *(*list.entries)[length - 1];
      if (recordedAt == 0 || !ns.prefix()) continue;
      const Binding binding{recordedAt, &ns};
      const auto [earlier, added] = bindings.try_emplace(*ns.prefix(), binding);
      if (!added && earlier->second.recordedAt < recordedAt) earlier->second = binding;
    }
  }
  for (const auto& [prefix, binding] : bindings) query.registerNamespace(*binding.ns);
}

}  // namespace kestrelink
