#include <lorvane/tag_values.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include <lorvane/file_tags.hpp>
#include <lorvane/tag_item.hpp>

namespace lorvane {
namespace {

// Reads a date from left to right; every step either takes its part or leaves the text as it
// was.
class DateText {
public:
  explicit DateText(std::string_view text) : text_(text) {}

  bool atEnd() const { return text_.empty(); }
  bool take(char c) {
    if (!text_.empty() && text_.front() == c) {
      text_.remove_prefix(1);
      return true;
    }
    return false;
  }
  // Exactly `count` digits.
  std::optional<int> digits(std::size_t count) {
    if (text_.size() < count) {
      return std::nullopt;
    }
    int value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if (text_[i] < '0' || text_[i] > '9') {
        return std::nullopt;
      }
      value = value * 10 + (text_[i] - '0');
    }
    text_.remove_prefix(count);
    return value;
  }
  std::string allDigits() {
    std::size_t count = 0;
    while (count < text_.size() && text_[count] >= '0' && text_[count] <= '9') {
      ++count;
    }
    std::string result(text_.substr(0, count));
    text_.remove_prefix(count);
    return result;
  }
  char peek() const { return text_.empty() ? '\0' : text_.front(); }

private:
  std::string_view text_;
};

unsigned daysIn(int year, unsigned month) {
  return static_cast<unsigned>(static_cast<unsigned>(
      std::chrono::year_month_day_last(std::chrono::year(year) / std::chrono::month(month) /
                                       std::chrono::last)
          .day()));
}

// "Z", "+02:00", "+0200" or "+02": minutes east of UTC.
std::optional<int> parseOffset(DateText& text) {
  if (text.take('Z')) {
    return 0;
  }
  const int sign = text.take('+') ? 1 : text.take('-') ? -1 : 0;
  if (sign == 0) {
    return std::nullopt;
  }
  const auto hours = text.digits(2);
  if (!hours) {
    return std::nullopt;
  }
  int minutes = 0;
  if (!text.atEnd()) {
    text.take(':');
    const auto more = text.digits(2);
    if (!more) {
      return std::nullopt;
    }
    minutes = *more;
  }
  if (*hours > 14 || minutes > 59) {
    return std::nullopt;
  }
  return sign * (*hours * 60 + minutes);
}

std::string twoDigits(unsigned value) {
  return std::string{static_cast<char>('0' + value / 10 % 10), static_cast<char>('0' + value % 10)};
}

}  // namespace

std::optional<TagDateTime> TagDateTime::parse(std::string_view source) {
  DateText text(source);
  TagDateTime result;
  const auto year = text.digits(4);
  if (!year || *year == 0) {
    return std::nullopt;
  }
  result.year = *year;
  if (text.atEnd()) {
    return result;
  }
  const char separator = text.peek();
  if (separator != ':' && separator != '-') {
    return std::nullopt;
  }
  text.take(separator);
  const auto month = text.digits(2);
  if (!month || *month < 1 || *month > 12) {
    return std::nullopt;
  }
  result.month = static_cast<unsigned>(*month);
  if (text.atEnd()) {
    return result;
  }
  if (!text.take(separator)) {
    return std::nullopt;
  }
  const auto day = text.digits(2);
  if (!day || *day < 1 || static_cast<unsigned>(*day) > daysIn(*year, result.month)) {
    return std::nullopt;
  }
  result.day = static_cast<unsigned>(*day);
  if (text.atEnd()) {
    return result;
  }
  if (!text.take(' ') && !text.take('T')) {
    return std::nullopt;
  }
  const auto hour = text.digits(2);
  if (!hour || *hour > 23 || !text.take(':')) {
    return std::nullopt;
  }
  const auto minute = text.digits(2);
  if (!minute || *minute > 59) {
    return std::nullopt;
  }
  result.hour = *hour;
  result.minute = *minute;
  if (text.take(':')) {
    const auto second = text.digits(2);
    if (!second || *second > 60) {  // 60: a leap second
      return std::nullopt;
    }
    result.second = *second;
    if (text.take('.')) {
      result.subseconds = text.allDigits();
      if (result.subseconds.empty()) {
        return std::nullopt;
      }
    }
  }
  if (!text.atEnd()) {
    result.offsetMinutes = parseOffset(text);
    if (!result.offsetMinutes || !text.atEnd()) {
      return std::nullopt;
    }
  }
  return result;
}

std::string TagDateTime::iso8601() const {
  std::string result = std::to_string(year);
  result.insert(0, result.size() < 4 ? 4 - result.size() : 0, '0');
  if (month == 0) {
    return result;
  }
  result += '-' + twoDigits(month);
  if (day == 0) {
    return result;
  }
  result += '-' + twoDigits(day);
  if (!hour) {
    return result;
  }
  result += 'T' + twoDigits(static_cast<unsigned>(*hour)) + ':' +
            twoDigits(static_cast<unsigned>(minute.value_or(0)));
  if (second) {
    result += ':' + twoDigits(static_cast<unsigned>(*second));
    if (!subseconds.empty()) {
      result += '.' + subseconds;
    }
  }
  if (offsetMinutes) {
    if (*offsetMinutes == 0) {
      result += 'Z';
    } else {
      const unsigned size = static_cast<unsigned>(std::abs(*offsetMinutes));
      result +=
          (*offsetMinutes < 0 ? '-' : '+') + twoDigits(size / 60) + ':' + twoDigits(size % 60);
    }
  }
  return result;
}

std::optional<std::chrono::sys_time<std::chrono::microseconds>> TagDateTime::utc() const {
  using namespace std::chrono;
  if (month == 0 || day == 0 || !hour || !offsetMinutes) {
    return std::nullopt;
  }
  // The first six digits of the fraction are microseconds; more are beyond what this keeps.
  std::string micro = subseconds.substr(0, 6);
  micro.append(6 - micro.size(), '0');
  const sys_days date =
      year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day));
  return time_point_cast<microseconds>(date) + hours(*hour) + minutes(minute.value_or(0)) +
         seconds(second.value_or(0)) + microseconds(std::stol(micro)) - minutes(*offsetMinutes);
}

std::optional<TagDateTime> FileTag::dateTime() const {
  if (raw.isList || raw.texts.size() != 1) {
    return std::nullopt;
  }
  auto date = TagDateTime::parse(raw.texts.front());
  // "2026" and "2026:11" are dates only in a tag that holds dates: elsewhere a number.
  if (date && date->day == 0 && (item == nullptr || !item->type().isDateTimeOrPartial())) {
    return std::nullopt;
  }
  return date;
}

std::optional<TagNumber> FileTag::number() const {
  if (raw.isList || raw.texts.size() != 1) {
    return std::nullopt;
  }
  const std::string& text = raw.texts.front();
  const char* first = text.data();
  const char* last = text.data() + text.size();
  if (first == last) {
    return std::nullopt;
  }
  if (text.find_first_not_of("-0123456789") == std::string::npos) {
    std::int64_t value = 0;
    if (const auto [end, error] = std::from_chars(first, last, value);
        error == std::errc() && end == last) {
      return TagNumber::make(value);
    }
    std::uint64_t large = 0;
    if (const auto [end, error] = std::from_chars(first, last, large);
        error == std::errc() && end == last) {
      return TagNumber::make(large);
    }
    return std::nullopt;
  }
  // Only the digits, point, sign and exponent of a decimal number: never "inf" or "nan".
  if (text.find_first_not_of("+-.0123456789eE") != std::string::npos) {
    return std::nullopt;
  }
  double value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc() || end != last || !std::isfinite(value)) {
    return std::nullopt;
  }
  return TagNumber::make(value);
}

}  // namespace lorvane
