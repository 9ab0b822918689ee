// The rules of the element classes, over inline XML.

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>

#include "kestrelink/platform/Uuid.h"
#include "kestrelink/standard/StandardReading.h"

#include "tests/support/ElementTable.h"
#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

// Makes "." in the tag names below an element a ":", which only trees made in memory have there.
void setPrefixes(const XMLWrapperElement& element) {
  for (const auto& child : element.elements()) {
    std::string name = child->tagName().value();
    std::replace(name.begin(), name.end(), '.', ':');
    child->setTagName(name);
    setPrefixes(*child);
  }
}

// Of each maker: the prefix of its namespace, its order of children, and what it makes.
std::string allMade() {
  std::string all;
  for (const ElementRow& row : elementTable()) {
    if (row.make == nullptr) continue;
    std::optional<ErrorInfo> error;
    const auto made = row.make(&error);
    all.append(row.elementClass->name());
    if (made) {
      const auto& own = made->namespaces();
      all += " prefix=" + (own.empty() ? "-" : shown(own.at(0)->prefix())) +
             " order=" + shown(made->childElementSequence());
    }
    all += "\n" + (made ? shown(made->xmlString()) : text(error)) + "\n";
  }
  return all;
}

TEST(Elements, GoldenFiles) {
  const StandingClock clock("2020-01-01T00:00:00Z");
  setUuidSourceForTesting([] { return std::string("0B1F6F0E-3A55-4F0C-9A4B-6E0E5B1C7D21"); });
  const LogCapture log;
  std::map<const XMLWrapperElementClass*, ElementRow> rows;
  for (const ElementRow& row : elementTable()) rows.emplace(row.elementClass, row);
  std::set<std::string_view> seen;
  std::string read;
  const auto all = root(file("tests/golden/elements/read.xml"));
  setPrefixes(*all);
  for (const auto& element : all->elements()) {
    const ElementRow& row = rows.at(&element->dynamicClass());
    seen.insert(row.elementClass->name());
    read.append(row.elementClass->name()).append(row.read(*element)).append("\n");
  }
  expectKept("tests/golden/elements/made.txt", allMade());
  expectKept("tests/golden/elements/read.txt", read);
  EXPECT_EQ(seen.size(), rows.size() - 2) << "only the two base classes are no element's";
  setUuidSourceForTesting(nullptr);
}

// Each class and each getter that a header declares has its place in the table.
TEST(Elements, AreAllInTheTable) {
  std::map<std::string, std::string> read;
  for (const ElementRow& row : elementTable()) {
    read.emplace(row.elementClass->name(), row.read(*row.elementClass->makeInstance()));
  }
  const std::regex declared(
      R"(class KESTRELINK_TYPE (\w+)|virtual [^;(]*[ &](\w+)\((?:ErrorOut error = nullptr)?\) const;)");
  std::size_t classes = 0;
  for (const auto& header :
       std::filesystem::directory_iterator(SOURCE_DIR "/kestrelink/saml/elements")) {
    const std::string source = header.path().extension() == ".h" ? fuzz::contentOf(header) : "";
    std::string name;
    for (std::sregex_iterator at(source.begin(), source.end(), declared), end; at != end; ++at) {
      if ((*at)[1].matched) name = (*at)[1], ++classes;
      EXPECT_TRUE(read.contains(name)) << name;
      EXPECT_TRUE((*at)[1].matched || read[name].find(" " + at->str(2) + "=") != std::string::npos)
          << name << "::" << (*at)[2];
    }
  }
  EXPECT_EQ(classes + 1, read.size()) << "with XMLWrapperElement";
}

TEST(Elements, SignedInformationIsWrittenWithEachReferenceOnce) {
  const auto info = root(
      "<SignedInfo><Reference URI='1'/><SignatureMethod/><CanonicalizationMethod/>"
      "<Reference URI='2'/></SignedInfo>");
  XMLWrapperElement::List children = info->elements();
  children.insert(children.end(), {children[3], children[0]});
  info->setElements(std::move(children));
  static_cast<void>(info->xmlString());
  std::string written;
  for (const auto& child : info->elements()) {
    written += child->tagName().value() + shown(standard::attributeText(*child, "URI")) + " ";
  }
  EXPECT_EQ(written, "CanonicalizationMethod- SignatureMethod- Reference1 Reference2 ");
}

}  // namespace
}  // namespace kestrelink::testing
