#include "kestrelink/signin/Dates.h"

#include <chrono>
#include <utility>

namespace kestrelink::signin {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;

// Takes characters from the front of a text. After a failure everything fails.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool take(char character) {
    if (rest_.empty() || rest_.front() != character) return false;
    rest_.remove_prefix(1);
    return true;
  }
  std::optional<char> takeOneOf(std::string_view characters) {
    for (const char each : characters) {
      if (take(each)) return each;
    }
    return std::nullopt;
  }
  void expect(char character) { good_ = take(character) && good_; }
  int number(std::size_t digits) {
    int value = 0;
    for (std::size_t index = 0; index < digits; ++index) value = value * 10 + digit();
    return value;
  }
  // Whether a fraction of a second follows that is not zero.
  bool fraction() {
    if (!take('.')) return false;
    int sum = digit();
    while (good_ && !rest_.empty() && isDigit(rest_.front())) sum |= digit();
    return sum != 0;
  }
  void fail() { good_ = false; }
  bool isDone() const { return good_ && rest_.empty(); }

 private:
  static bool isDigit(char character) { return character >= '0' && character <= '9'; }
  int digit() {
    if (rest_.empty() || !isDigit(rest_.front())) return fail(), 0;
    const int value = rest_.front() - '0';
    rest_.remove_prefix(1);
    return value;
  }

  std::string_view rest_;
  bool good_ = true;
};

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

seconds offsetFromUtc(Reader& reader) {
  if (reader.take('Z')) return {};
  const auto sign = reader.takeOneOf("+-");
  if (!sign) return {};
  const int hour = reader.number(2);
  reader.expect(':');
  const int minute = reader.number(2);
  if (hour > 14 || minute > 59 || (hour == 14 && minute != 0)) reader.fail();
  const seconds offset = hours(hour) + minutes(minute);
  return *sign == '-' ? -offset : offset;
}

bool hasYearOfFourDigits(sys_seconds instant) {
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(instant));
  return day.year() >= std::chrono::year(1) && day.year() <= std::chrono::year(9999);
}

}  // namespace

std::optional<SAMLDate> dateFromText(std::string_view text, Rounding rounding) {
  Reader reader(withoutBlanks(text));
  const std::chrono::year year(reader.number(4));
  reader.expect('-');
  const std::chrono::month month(static_cast<unsigned>(reader.number(2)));
  reader.expect('-');
  const std::chrono::year_month_day day(year, month,
                                        std::chrono::day(static_cast<unsigned>(reader.number(2))));
  reader.expect('T');
  const int hour = reader.number(2);
  reader.expect(':');
  const int minute = reader.number(2);
  reader.expect(':');
  const int second = reader.number(2);
  const bool hasFraction = reader.fraction();
  const seconds offset = offsetFromUtc(reader);

  const bool isEndOfDay = hour == 24 && minute == 0 && second == 0 && !hasFraction;
  const bool isTime = (hour < 24 || isEndOfDay) && minute < 60 && second < 60;
  if (!reader.isDone() || !day.ok() || !isTime) return std::nullopt;
  sys_seconds instant =
      std::chrono::sys_days(day) + hours(hour) + minutes(minute) + seconds(second) - offset;
  if (hasFraction && rounding == Rounding::up) instant += seconds(1);
  if (!hasYearOfFourDigits(instant)) return std::nullopt;
  return SAMLDate(instant);
}

}  // namespace kestrelink::signin
