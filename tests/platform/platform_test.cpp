#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "kestrelink/platform/Base64.h"
#include "kestrelink/platform/Decimal.h"
#include "kestrelink/platform/ResourceBundle.h"
#include "kestrelink/platform/Text.h"
#include "kestrelink/platform/UrlText.h"

#include "tests/support/Support.h"

namespace kestrelink::testing {
namespace {

using std::string_view_literals::operator""sv;

TEST(Text, Utf8) {
  for (const auto good : {""sv, "a\0b"sv, "\xC3\xA9"sv, "\xEF\xBF\xBE"sv, "\xF4\x8F\xBF\xBF"sv}) {
    EXPECT_TRUE(isUtf8(good)) << good;
  }
  for (const auto bad : {"\xC0\x80"sv, "\xC1\xBF"sv, "\xE0\x9F\xBF"sv, "\xF0\x8F\xBF\xBF"sv,
                         "\xED\xA0\x80"sv, "\xED\xBF\xBF"sv, "\xF4\x90\x80\x80"sv, "\xFF\xFE"sv,
                         "\xC3"sv, "\xE2\x82"sv, "\xF0\x9F\x98"sv, "\x80"sv, "a\xC3("sv}) {
    EXPECT_FALSE(isUtf8(bad)) << bad;
    for (const auto before : {"1234567", "12345678", "123456789012345\xC3\xA9"}) {
      EXPECT_FALSE(isUtf8(before + std::string(bad) + "12345678")) << before << bad;
    }
  }
}

TEST(Text, Trimming) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"", ""},
      {" \t\n\v\f\r", ""},
      {" a b\n", "a b"},
      {"\u00A0\u1680\u2000\u200Aa\u2028\u2029\u202F\u205F\u3000", "a"},
      {"\xC2\x85x", "x"},                  // next line
      {"\u200Ba\u200B", "\u200Ba\u200B"},  // a zero-width space is no white space
      {" \xC3\xA9 ", "\xC3\xA9"},          // a letter whose last byte is A9
      {" \x80 x \xE2 ", "\x80 x \xE2"},    // bytes that are no characters stay
  };
  for (const auto& [given, expected] : rows) EXPECT_EQ(trimmed(given), expected) << given;
}

TEST(Base64, ToleratesWhatIsOutsideItsAlphabet) {
  const std::vector<std::uint8_t> abc = {'a', 'b', 'c', 'd'};
  for (const auto text : {"YWJjZA==", " YW\r\nJj\tZA= =", "*YWJj-ZA==!"}) {
    EXPECT_EQ(decodeBase64(text), abc) << text;
  }
  for (const auto text :
       {"Y", "YWJjZ", "YWJjZA", "YWJjZA=", "====", "YW=jZA==", "A===", "AQIDA===", "YWJj===="}) {
    EXPECT_EQ(decodeBase64(text), std::nullopt) << text;
  }
}

TEST(Decimal, ReadsNumbersAndNothingElse) {
  EXPECT_EQ(parseDecimal("160"), 160.0);
  EXPECT_EQ(parseDecimal("-2.5"), -2.5);
  for (const auto text :
       {"", "-", ".", "abc", "1e3", "0x10", "inf", "nan", " 1", "1 ", "1,000", "1.2.3", "--1"}) {
    EXPECT_EQ(parseDecimal(text), std::nullopt) << text;
  }
}

TEST(UrlText, LastPathComponent) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"a.xsd", "a.xsd"},
      {"http://host.example/x/y/a.xsd", "a.xsd"},
      {"http://host.example/x/a.xsd?b/c.xsd#d/e", "a.xsd"},
      {"/x/y/", "y"},
      {"x/..", ".."},
      {"?a.xsd", ""},
      {"///", ""},
      {"http://a.xsd", ""},
      {"http://a.xsd?b/c", ""},
      {"//a.xsd/b", "b"},
      {"file:a.xsd", "a.xsd"},
      {"x/a:b.xsd", "a:b.xsd"},
  };
  for (const auto& [url, expected] : rows) EXPECT_EQ(lastPathComponent(url), expected) << url;
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
  for (const auto name : {""sv, "."sv, ".."sv, "sub"sv, "absent"sv}) {
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

TEST(SAMLDate, ReadsExactlyOneForm) {
  for (const auto date : {"2014-05-06T07:08:09Z", "2024-02-29T23:59:59Z", "0001-01-01T00:00:00Z",
                          "9999-12-31T23:59:59Z", "1969-12-31T23:59:59Z"}) {
    EXPECT_EQ(SAMLStringFromDate(SAMLDateFromString(date)), date);
  }
  for (const auto text :
       {"", "2014-05-06T07:08:09.5Z", "2014-05-06T07:08:09+00:00", "2014-05-06T07:08:09",
        "2014-05-06 07:08:09Z", "2014-05-06", "2014-5-6T7:8:9Z", "2023-02-29T00:00:00Z",
        "2014-13-01T00:00:00Z", "2014-00-01T00:00:00Z", "2014-05-06T24:00:00Z",
        "2014-05-06T07:60:09Z", "2014-05-06T07:08:60Z", "0000-01-01T00:00:00Z",
        " 2014-05-06T07:08:09Z", "2014-05-06T07:08:09z", "+014-05-06T07:08:09Z",
        "2014-05-06T07:08:/9Z", "2014-05-06T07:08:0:Z"}) {
    EXPECT_EQ(SAMLDateFromString(text), std::nullopt) << text;
  }
  EXPECT_EQ(SAMLDateFromString(std::nullopt), std::nullopt);

  // Beyond the years that have four digits nothing is written, and the log says so.
  const LogCapture log;
  for (const int year : {-1, 0, 10000, 12026}) {
    EXPECT_EQ(SAMLStringFromDate(std::chrono::sys_days(std::chrono::year(year) / 6 / 1)),
              std::nullopt)
        << year;
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
