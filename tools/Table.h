#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ksaml {

/// Text from a message, or a file name, as a terminal may see it. Characters that could steer the
/// terminal, or that nobody would see there, become "\u" or "\U" and their number: controls, marks
/// of direction, characters of no width, line separators, private use. A byte that is not UTF-8
/// becomes "\x" and its number.
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
