#include "platform/formatted_text.h"

#include <cctype>

std::string Str_Asprintf(std::string_view format, const std::vector<std::string_view>& arguments) {
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') {
      text += format[i];
      continue;
    }
    if (format.substr(i, 2) == "%%") {
      text += '%';
      ++i;
      continue;
    }
    std::size_t number = 0;
    std::size_t end = i + 1;
    while (end < format.size() && std::isdigit(static_cast<unsigned char>(format[end])) != 0) {
      number = number * 10 + static_cast<std::size_t>(format[end] - '0');
      ++end;
    }
    if (number == 0 || number > arguments.size() || format.substr(end, 2) != "$s") {
      text += format[i];
      continue;
    }
    text += arguments[number - 1];
    i = end + 1;
  }
  return text;
}

std::string MsgFmt_Asprintf(std::string_view format, const std::vector<std::string>& arguments) {
  std::string text;
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    const std::string_view two = format.substr(i, 2);
    if (two == "%s") {
      text += next < arguments.size() ? arguments[next] : std::string();
      ++next;
      ++i;
    } else {
      text += format[i];
      if (two == "%%") {
        ++i;
      }
    }
  }
  return text;
}
