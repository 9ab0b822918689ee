#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stress {

/// What an operation answered.
struct Answer {
  bool absent = false;
  std::string text;  // the whole answer; of an absent one its error as "domain code", or nothing
};

/// Something that is asked with a fault window around the asking. May throw std::bad_alloc.
struct Operation {
  std::string_view name;
  Answer (*run)();
  /// How an answer that is absent for want of memory may be explained.
  std::vector<std::string_view> documented;
  /// Of how many allocations of libxml2 one fails in a run that must be short.
  long shortStride = 1;
  /// libxml2 alone, called as the library calls it.
  bool raw = false;
};

const std::vector<Operation>& operations();
/// What of those is done by libxml2: the faults found here are its own.
const std::vector<Operation>& rawOperations();

/// The answer that is read, and the same with an element that the schema does not allow.
const std::string& sample();
const std::string& sampleWithStranger();

}  // namespace stress
