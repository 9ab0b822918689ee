#include "kestrelink/saml/elements/SAMLDateText.h"

#include "kestrelink/platform/DiagnosticLog.h"

namespace kestrelink {
namespace {

constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:ddZ";

bool isDigit(char character) { return character >= '0' && character <= '9'; }

bool hasShape(std::string_view text) {
  if (text.size() != kShape.size()) return false;
  for (std::size_t index = 0; index < kShape.size(); ++index) {
    const bool fits = kShape[index] == 'd' ? isDigit(text[index]) : text[index] == kShape[index];
    if (!fits) return false;
  }
  return true;
}

int number(std::string_view digits) {
  int value = 0;
  for (const char digit : digits) value = value * 10 + (digit - '0');
  return value;
}

// Writes a number over the digits that end before `end`.
void writeBefore(std::size_t end, std::string& text, unsigned value) {
  for (; value > 0; value /= 10) text[--end] = static_cast<char>('0' + value % 10);
}

constexpr SAMLDate kFirst(std::chrono::sys_days(std::chrono::year(1) / 1 / 1));
constexpr SAMLDate kEnd(std::chrono::sys_days(std::chrono::year(10000) / 1 / 1));

}  // namespace

std::optional<std::string> SAMLDateFormatter::stringFromDate(SAMLDate date) const {
  if (date < kFirst || date >= kEnd) {
    logDiagnostic("A date outside the years 0001 to 9999 cannot be written");
    return std::nullopt;
  }
  const auto day = std::chrono::floor<std::chrono::days>(date.seconds());
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss time(date.seconds() - day);
  std::string text = "0000-00-00T00:00:00Z";
  writeBefore(4, text, static_cast<unsigned>(static_cast<int>(calendar.year())));
  writeBefore(7, text, static_cast<unsigned>(calendar.month()));
  writeBefore(10, text, static_cast<unsigned>(calendar.day()));
  writeBefore(13, text, static_cast<unsigned>(time.hours().count()));
  writeBefore(16, text, static_cast<unsigned>(time.minutes().count()));
  writeBefore(19, text, static_cast<unsigned>(time.seconds().count()));
  return text;
}

std::optional<SAMLDate> SAMLDateFormatter::dateFromString(std::string_view text) const {
  if (!hasShape(text)) return std::nullopt;
  const auto field = [text](std::size_t from, std::size_t length) {
    return number(text.substr(from, length));
  };
  const std::chrono::year_month_day day(std::chrono::year(field(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(field(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(field(8, 2))));
  const std::chrono::hours hours(field(11, 2));
  const std::chrono::minutes minutes(field(14, 2));
  const std::chrono::seconds seconds(field(17, 2));
  const bool exists = day.ok() && day.year() >= std::chrono::year(1) && hours.count() < 24 &&
                      minutes.count() < 60 && seconds.count() < 60;
  if (!exists) return std::nullopt;
  return SAMLDate(std::chrono::sys_days(day) + hours + minutes + seconds);
}

std::optional<std::string> SAMLStringFromDate(std::optional<SAMLDate> date) {
  if (!date) return std::nullopt;
  return SAMLDateFormatter().stringFromDate(*date);
}

std::optional<SAMLDate> SAMLDateFromString(std::optional<std::string_view> text) {
  if (!text) return std::nullopt;
  return SAMLDateFormatter().dateFromString(*text);
}

}  // namespace kestrelink
