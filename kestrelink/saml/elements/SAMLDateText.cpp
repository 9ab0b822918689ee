#include "kestrelink/saml/elements/SAMLDateText.h"

#include <array>

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

}  // namespace

std::string SAMLDateFormatter::stringFromDate(SAMLDate date) const {
  const auto day = std::chrono::floor<std::chrono::days>(date.seconds());
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss time(date.seconds() - day);
  const std::array<unsigned, 6> fields = {static_cast<unsigned>(static_cast<int>(calendar.year())),
                                          static_cast<unsigned>(calendar.month()),
                                          static_cast<unsigned>(calendar.day()),
                                          static_cast<unsigned>(time.hours().count()),
                                          static_cast<unsigned>(time.minutes().count()),
                                          static_cast<unsigned>(time.seconds().count())};
  // From the last digit to the first, each into its place in the shape.
  std::string text(kShape);
  std::size_t place = text.size();
  for (std::size_t field = fields.size(); field-- > 0;) {
    unsigned rest = fields[field];
    while (text[place - 1] != 'd') --place;
    for (; place > 0 && text[place - 1] == 'd'; --place, rest /= 10) {
      text[place - 1] = static_cast<char>('0' + rest % 10);
    }
  }
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
