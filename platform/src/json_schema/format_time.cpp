#include "json/characters.h"
#include "json_schema/text_formats.h"

#include <cstddef>

namespace JsonValidator {
namespace {

/// Takes digits and punctuation off the front of a text.
class TimeReader {
 public:
  explicit TimeReader(std::string_view text) : rest_(text) {}

  /// Exactly so many digits, or -1.
  int Number(std::size_t digits) {
    int number = 0;
    if (rest_.size() < digits) {
      return -1;
    }
    for (std::size_t i = 0; i < digits; ++i) {
      if (!Json::IsDigit(rest_[i])) {
        return -1;
      }
      number = number * 10 + (rest_[i] - '0');
    }
    rest_.remove_prefix(digits);
    return number;
  }

  bool Skip(char wanted) {
    if (rest_.empty() || rest_.front() != wanted) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  std::size_t SkipDigits() {
    std::size_t count = 0;
    while (count < rest_.size() && Json::IsDigit(rest_[count])) {
      ++count;
    }
    rest_.remove_prefix(count);
    return count;
  }

  bool AtEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

bool Between(int number, int low, int high) {
  return number >= low && number <= high;
}

bool ReadOffset(TimeReader& reader, int& minutes) {
  if (reader.Skip('Z') || reader.Skip('z')) {
    return true;
  }
  const bool east = reader.Skip('+');
  if (!east && !reader.Skip('-')) {
    return false;
  }
  const int hour = reader.Number(2);
  const bool colon = reader.Skip(':');
  const int minute = reader.Number(2);
  minutes = (east ? 1 : -1) * (hour * 60 + minute);
  return colon && Between(hour, 0, 23) && Between(minute, 0, 59);
}

/// Numbers, each with its unit, that follow one another in the list of units without a gap.
bool ReadAmounts(TimeReader& reader, std::string_view units) {
  bool any = false;
  for (const char unit : units) {
    TimeReader ahead = reader;
    if (ahead.SkipDigits() > 0 && ahead.Skip(unit)) {
      reader = ahead;
      any = true;
    } else if (any) {
      break;
    }
  }
  return any;
}

}  // namespace

bool IsDate(std::string_view text) {
  TimeReader reader(text);
  const int year = reader.Number(4);
  const bool firstDash = reader.Skip('-');
  const int month = reader.Number(2);
  const bool secondDash = reader.Skip('-');
  const int day = reader.Number(2);
  if (year < 0 || !firstDash || !secondDash || !Between(month, 1, 12) || !reader.AtEnd()) {
    return false;
  }
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leapYear = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return Between(day, 1, kDays[month - 1] + static_cast<int>(leapYear && month == 2));
}

bool IsTime(std::string_view text) {
  TimeReader reader(text);
  const int hour = reader.Number(2);
  const bool firstColon = reader.Skip(':');
  const int minute = reader.Number(2);
  const bool secondColon = reader.Skip(':');
  const int second = reader.Number(2);
  const bool fraction = !reader.Skip('.') || reader.SkipDigits() > 0;
  int offset = 0;
  if (!firstColon || !secondColon || !fraction || !ReadOffset(reader, offset) || !reader.AtEnd() ||
      !Between(hour, 0, 23) || !Between(minute, 0, 59)) {
    return false;
  }
  if (second == 60) {  // leap seconds end a day of UTC
    constexpr int kDay = 24 * 60;
    return (hour * 60 + minute - offset + 2 * kDay) % kDay == kDay - 1;
  }
  return Between(second, 0, 59);
}

bool IsDateTime(std::string_view text) {
  constexpr std::size_t kDateLength = 10;
  return text.size() > kDateLength && (text[kDateLength] == 'T' || text[kDateLength] == 't') &&
         IsDate(text.substr(0, kDateLength)) && IsTime(text.substr(kDateLength + 1));
}

bool IsDuration(std::string_view text) {
  TimeReader reader(text);
  if (!reader.Skip('P')) {
    return false;
  }
  if (ReadAmounts(reader, "W")) {
    return reader.AtEnd();
  }
  const bool days = ReadAmounts(reader, "YMD");
  const bool time = reader.Skip('T');
  return (days || time) && (!time || ReadAmounts(reader, "HMS")) && reader.AtEnd();
}

}  // namespace JsonValidator
