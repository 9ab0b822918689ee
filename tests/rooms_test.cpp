// The rooms of the house: includes point downwards only.

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

TEST(Rooms, IncludesPointDownwards) {
  const std::vector<std::string> rooms = {"platform",      "xml/libxml",    "xml",
                                          "saml/elements", "saml/messages", "saml"};
  std::map<std::string, std::size_t> height;
  for (const std::string& room : rooms) height.emplace(room, height.size());
  const std::regex include(R"re(^#include "kestrelink/(.*)/[^/]+")re");
  const std::regex anyQuoted(R"re(^#include "([^"]+)")re");

  int includes = 0;
  for (const std::string& room : rooms) {
    for (const auto& file : fs::directory_iterator(fs::path(SOURCE_DIR) / "kestrelink" / room)) {
      if (!file.is_regular_file()) continue;
      std::ifstream source(file.path());
      for (std::string line; std::getline(source, line);) {
        std::smatch match;
        if (!std::regex_search(line, match, anyQuoted)) continue;
        ASSERT_TRUE(std::regex_search(line, match, include)) << file.path() << ": " << line;
        ASSERT_TRUE(height.contains(match[1])) << file.path() << ": " << line;
        EXPECT_LE(height[match[1]], height[room]) << file.path() << ": " << line;
        ++includes;
      }
    }
  }
  EXPECT_GT(includes, 100);

  // What a client could have written includes what a client can include.
  for (const std::string folder : {"kestrelink/standard", "tools"}) {
    const std::regex allowed("\"kestrelink/(saml/KestrelinkSAML|standard/[A-Za-z]+)\\.h\"");
    int included = 0;
    for (const auto& file : fs::directory_iterator(fs::path(SOURCE_DIR) / folder)) {
      std::ifstream source(file.path());
      for (std::string line; std::getline(source, line);) {
        if (!std::regex_search(line, include)) continue;
        EXPECT_TRUE(std::regex_search(line, allowed)) << file.path() << ": " << line;
        ++included;
      }
    }
    EXPECT_GT(included, 0) << folder;
  }
}

}  // namespace
