#pragma once

#include <cstdint>
#include <memory_resource>
#include <unordered_map>
#include <vector>

#include "kestrelink/xml/NamespaceMap.h"

struct _xmlNs;

namespace kestrelink {

/// The namespace records of one parse tree while it is read. Each is read once, however many
/// elements and attributes refer to it.
class NamespaceRecords {
 public:
  explicit NamespaceRecords(std::pmr::memory_resource& memory) : records_(&memory) {}

  /// The namespaces of an element whose namespace is `own`: that record and those after it in its
  /// list, whichever element declared them. Null for null. Lives as long as this object.
  const NamespaceMap* recordedFrom(const _xmlNs* own);

  /// The namespace of an attribute; null for null.
  NamespaceMap::Entry namespaceOf(const _xmlNs* record);

  /// The bindings of prefixes that elements recorded: of two bindings of a prefix the one that was
  /// read last. They live as long as this object.
  std::vector<const XMLWrapperNamespace*> latestBindings() const;

 private:
  struct Record {
    NamespaceMap withAllAfter;
    std::uint64_t lastRecordedAt = 0;  // by an element; 0 is never
  };

  Record& read(const _xmlNs* record);

  std::pmr::unordered_map<const _xmlNs*, Record> records_;
  std::uint64_t recordings_ = 0;
};

}  // namespace kestrelink
