#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ksaml {

/// Text from a message as a terminal may see it: control characters, which could steer the
/// terminal, become "\u" and their number.
std::string printable(std::string_view text);

/// Names and values, printed in two columns.
class Table {
 public:
  void add(std::string name, std::string value) {
    rows_.emplace_back(std::move(name), std::move(value));
  }
  bool empty() const { return rows_.empty(); }
  std::string text(std::string_view indent) const;

 private:
  std::vector<std::pair<std::string, std::string>> rows_;
};

}  // namespace ksaml
