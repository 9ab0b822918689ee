// Includes point downwards only.

#include <algorithm>
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

// One above the highest file of xml/ that the file or its header includes. `above` ends a circle.
int levelInXml(const std::string& name, int above = 0) {
  const std::regex pattern("^#include \"kestrelink/xml/([A-Za-z]+)\\.h\"");
  int highest = 0;
  for (const char* const ending : {".h", ".cpp"}) {
    std::ifstream source(SOURCE_DIR "/kestrelink/xml/" + name + ending);
    std::smatch match;
    for (std::string line; above < 7 && std::getline(source, line);) {
      if (std::regex_search(line, match, pattern) && match[1] != name)
        highest = std::max(highest, levelInXml(match[1], above + 1));
    }
  }
  return highest + 1;
}

TEST(Layers, XmlHasSixAndNoCircle) {
  for (const auto& file : std::filesystem::directory_iterator(SOURCE_DIR "/kestrelink/xml")) {
    if (!file.is_regular_file()) continue;
    EXPECT_LE(levelInXml(file.path().stem()), 6) << file.path();
  }
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
  const std::string exported = "kestrelink/(saml|standard|signin|xml)/([a-z]+/)?[A-Za-z]+\\.h";
  const std::string tool =
      "(kestrelink/(saml/KestrelinkSAML|standard/[A-Za-z]+|signin/"
      "(Bindings|Client|Result|SignIn))|[A-Za-z]+)\\.h";
  EXPECT_GT(includesThatMatch("kestrelink/standard", own), 0);
  EXPECT_GT(includesThatMatch("kestrelink/signin", exported), 0);
  EXPECT_GT(includesThatMatch("tools", tool), 0);
}

}  // namespace
