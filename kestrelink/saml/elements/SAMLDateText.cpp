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

}  // namespace

std::optional<std::string> SAMLDateFormatter::stringFromDate(SAMLDate date) const {
  std::string text = textOf(date);
  if (!text.empty()) return text;
  logDiagnostic("A date outside the years 0001 to 9999 cannot be written");
  return std::nullopt;
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
