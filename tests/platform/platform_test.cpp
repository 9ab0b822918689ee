#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "kestrelink/platform/Base64.h"
#include "kestrelink/platform/Decimal.h"
#include "kestrelink/platform/ResourceBundle.h"
#include "kestrelink/platform/Text.h"
#include "kestrelink/platform/UrlText.h"
#include "kestrelink/xml/libxml/OverfullTag.h"
#include "kestrelink/xml/libxml/XmlCharacters.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

using std::string_view_literals::operator""sv;

std::string utf8Of(const std::string& text) {
  for (const auto before : {"1234567", "12345678", "123456789012345\xC3\xA9"}) {
    EXPECT_EQ(isUtf8(before + text + "12345678"), isUtf8(text)) << before << text;
  }
  return isUtf8(text) ? "UTF-8" : "not UTF-8";
}

// Of characters, with blanks between them: where in a name each may stand.
std::string placesInNames(const std::string& characters) {
  std::istringstream all(characters);
  std::set<std::string> places;
  for (std::string each; all >> each;) {
    places.insert(isXmlName(each) ? "first" : isXmlName("a" + each) ? "not first" : "nowhere");
    EXPECT_TRUE(!isXmlName(each) || isXmlName("a" + each)) << each;
  }
  return shown(places);
}

std::optional<long> tenths(std::optional<double> number) {
  return number ? std::optional(std::lround(*number * 10)) : std::nullopt;
}

TEST(Texts, GoldenReadings) {
  const std::map<std::string, std::function<std::string(const std::string&)>> operations = {
      {"date", [](const auto& text) { return shown(SAMLDateFromString(text)); }},
      {"decimal", [](const auto& text) { return shown(tenths(parseDecimal(text))); }},
      {"base64", [](const auto& text) { return shown(decodeBase64(text)); }},
      {"file", [](const auto& text) { return "'" + shown(lastPathComponent(text)) + "'"; }},
      {"trimmed",
       [](const auto& text) {
         return trimmed(text) == text ? "unchanged" : "'" + shown(trimmed(text)) + "'";
       }},
      {"utf8", utf8Of},
      {"name", placesInNames},
      {"tag", [](const auto& text) { return shown(hasTagWithMoreAttributes(text, 3)); }}};
  expectCases("tests/golden/cases/texts.txt", [&](const std::string& line) {
    const std::size_t blank = line.find(' ');
    return operations.at(line.substr(0, blank))(line.substr(std::min(blank, line.size() - 1) + 1));
  });
  EXPECT_FALSE(isXmlNCName("a:b"));
}

TEST(ResourceBundle, NamesNeverLeaveTheFolder) {
  namespace fs = std::filesystem;
  const fs::path outside = ::testing::TempDir() + "kestrelink-bundle-" + std::to_string(::getpid());
  const fs::path folder = outside / "bundle";
  fs::create_directories(folder / "sub");
  for (const auto name : {"../secret.txt", "sub/deep.txt", "plain", "a.b.txt"}) {
    std::ofstream(folder / name) << name;
  }
  std::ofstream(folder / "latin.txt") << "\xE9";
  const ResourceBundle bundle(folder);

  EXPECT_EQ(bundle.text("plain", std::nullopt), "plain");
  EXPECT_EQ(bundle.text("a.b", "txt"), "a.b.txt");
  EXPECT_EQ(bundle.text("latin", "txt"), std::nullopt);
  EXPECT_EQ(bundle.bytes("latin", "txt"), "\xE9");
  for (const auto name : {"../secret"sv, "sub/deep"sv, "/etc/hostname"sv, "secret"sv, ""sv,
                          "../bundle/a.b"sv, "a.b.txt\0"sv}) {
    EXPECT_EQ(bundle.bytes(name, "txt"), std::nullopt) << name;
  }
  for (const auto name : {""sv, "."sv, ".."sv, "sub"sv, "missing"sv}) {
    EXPECT_EQ(bundle.bytes(name, std::nullopt), std::nullopt) << name;
  }
  fs::remove_all(outside);
}

// What is only out of reach for a moment must not be remembered as missing.
TEST(ResourceBundle, FileDescriptors) {
  const ResourceBundle bundle(SOURCE_DIR);
  const int kept = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  EXPECT_TRUE(bundle.bytes("README", "md"));
  EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1) << "the descriptor was given back";
  ::dup2(kept, STDIN_FILENO);
  ::close(kept);

  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_THROW(SAMLParserController(), std::bad_alloc);
  EXPECT_THROW(static_cast<void>(bundle.bytes("README", "md")), std::bad_alloc);
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_TRUE(SAMLParserController().schema());
}

TEST(SAMLDate, OfAYearWithoutFourDigitsIsNotWritten) {
  EXPECT_EQ(SAMLDateFromString(std::nullopt), std::nullopt);
  const LogCapture log;
  using std::chrono::seconds;
  for (const char* const edge : {"0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z"}) {
    const auto date = SAMLDateFromString(edge);
    EXPECT_EQ(SAMLStringFromDate(date), edge);
    const auto step = edge[0] == '0' ? seconds(-1) : seconds(1);
    EXPECT_EQ(SAMLStringFromDate(date->seconds() + step), std::nullopt) << edge;
  }
  for (const int year : {-1, 12026}) {
    const std::chrono::sys_days day(std::chrono::year(year) / 6 / 1);
    EXPECT_EQ(SAMLStringFromDate(day), std::nullopt) << year;
  }
  EXPECT_EQ(LogCapture::lines().size(), 4u);
}

TEST(SAMLDate, DropsFractionsAndComparesWithTimePointsExactly) {
  using std::chrono::system_clock;
  const system_clock::time_point half(std::chrono::milliseconds(1500));
  EXPECT_EQ(SAMLStringFromDate(SAMLDate(half)), "1970-01-01T00:00:01Z");
  EXPECT_EQ(SAMLStringFromDate(SAMLDate(system_clock::time_point(std::chrono::milliseconds(-1)))),
            "1969-12-31T23:59:59Z");
  EXPECT_LT(SAMLDate(half), half);
  EXPECT_EQ(system_clock::time_point(SAMLDate(half)), half - std::chrono::milliseconds(500));
  EXPECT_GT(SAMLDate(std::chrono::sys_seconds(std::chrono::seconds(2))), half);

  const SAMLDate never = *SAMLDateFromString("9999-12-31T23:59:59Z");
  EXPECT_GT(never, system_clock::time_point::max());
  EXPECT_EQ(system_clock::time_point(never), system_clock::time_point::max());
  const SAMLDate long_ago = *SAMLDateFromString("0001-01-01T00:00:00Z");
  EXPECT_LT(long_ago, system_clock::time_point::min());
  EXPECT_LT(SAMLDate(system_clock::time_point::min()), system_clock::time_point::min());
  EXPECT_EQ(system_clock::time_point(long_ago), system_clock::time_point::min());
  for (const std::chrono::sys_seconds edge :
       {std::chrono::floor<std::chrono::seconds>(system_clock::time_point::max()),
        std::chrono::ceil<std::chrono::seconds>(system_clock::time_point::min())}) {
    EXPECT_EQ(system_clock::time_point(SAMLDate(edge)), edge);
  }

  // Beyond the range of time points too, and for every precision.
  EXPECT_EQ(std::optional(never), std::optional(never));
  EXPECT_NE(never, long_ago);
  EXPECT_NE(never, SAMLDate(never.seconds() + std::chrono::seconds(1)));
  const std::chrono::sys_days day(std::chrono::year(2500) / 1 / 1);
  EXPECT_EQ(SAMLDate(day), day);
  EXPECT_LT(SAMLDate(day), std::chrono::sys_seconds(day) + std::chrono::seconds(1));
  EXPECT_GT(SAMLDate(day), std::chrono::sys_days(std::chrono::year(2499) / 1 / 1));
}

}  // namespace
}  // namespace kestrelink::testing
