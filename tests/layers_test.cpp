// Includes point downwards only.

#include <filesystem>
#include <fstream>
#include <regex>

#include <gtest/gtest.h>

namespace {

// The files of a folder: how many includes of a header in quotes there are, each of which must
// match.
int includesThatMatch(const std::string& folder, const std::string& allowed) {
  const std::regex pattern("^#include \"" + allowed + "\"");
  int includes = 0;
  for (const auto& file : std::filesystem::directory_iterator(SOURCE_DIR "/" + folder)) {
    std::ifstream source(file.path());
    for (std::string line; std::getline(source, line);) {
      if (!line.starts_with("#include \"")) continue;
      EXPECT_TRUE(std::regex_search(line, pattern)) << file.path() << ": " << line;
      ++includes;
    }
  }
  return includes;
}

TEST(Layers, IncludesPointDownwards) {
  std::string below;
  int includes = 0;
  for (const char* const layer :
       {"platform", "xml/libxml", "xml", "saml/elements", "saml/messages", "saml"}) {
    below += (below.empty() ? "" : "|") + std::string(layer);
    includes +=
        includesThatMatch("kestrelink/" + std::string(layer), "kestrelink/(" + below + ")/[^/]+");
  }
  EXPECT_GT(includes, 100);

  // What a client could have written includes what a client can include.
  const std::string own = "(kestrelink/(saml/KestrelinkSAML|standard/[A-Za-z]+)|[A-Za-z0-9]+)\\.h";
  for (const std::string folder : {"kestrelink/standard", "tools"}) {
    EXPECT_GT(includesThatMatch(folder, own), 0) << folder;
  }
}

}  // namespace
