#include "kestrelink/xml/NamespaceRecords.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include <libxml/tree.h>

#include "kestrelink/xml/libxml/LibxmlText.h"

namespace kestrelink {

std::shared_ptr<XMLWrapperNamespace> XMLWrapperNamespace::initWithNsNode(const xmlNs* record) {
  return std::make_shared<XMLWrapperNamespace>(textOf(record->prefix), textOf(record->href));
}

NamespaceRecords::Record& NamespaceRecords::read(const xmlNs* record) {
  std::vector<const xmlNs*> unknown;
  NamespaceMap rest;
  for (const xmlNs* next = record; next != nullptr; next = next->next) {
    if (const auto known = records_.find(next); known != records_.end()) {
      if (unknown.empty()) return known->second;
      rest = known->second.withAllAfter;
      break;
    }
    unknown.push_back(next);
  }
  for (; !unknown.empty(); unknown.pop_back()) {
    rest.putFirst(XMLWrapperNamespace::initWithNsNode(unknown.back()));
    records_.emplace(unknown.back(), Record{rest});
  }
  return records_.at(record);
}

const NamespaceMap* NamespaceRecords::recordedFrom(const xmlNs* own) {
  if (own == nullptr) return nullptr;
  Record& record = read(own);
  record.lastRecordedAt = ++recordings_;
  return &record.withAllAfter;
}

NamespaceMap::Entry NamespaceRecords::namespaceOf(const xmlNs* record) {
  return record == nullptr ? nullptr : read(record).withAllAfter.at(0);
}

std::vector<const XMLWrapperNamespace*> NamespaceRecords::latestBindings() const {
  std::vector<const Record*> latestFirst;
  for (const auto& [node, record] : records_) {
    if (record.lastRecordedAt > 0) latestFirst.push_back(&record);
  }
  std::sort(latestFirst.begin(), latestFirst.end(), [](const Record* left, const Record* right) {
    return left->lastRecordedAt > right->lastRecordedAt;
  });

  std::unordered_set<const XMLWrapperNamespace*> seen;
  std::unordered_set<std::string_view> bound;
  std::vector<const XMLWrapperNamespace*> bindings;
  for (const Record* const record : latestFirst) {
    for (const auto& ns : record->withAllAfter) {
      if (!seen.insert(ns.get()).second) break;  // all after it were seen too
      if (ns->prefix() && bound.insert(*ns->prefix()).second) bindings.push_back(ns.get());
    }
  }
  return bindings;
}

}  // namespace kestrelink
