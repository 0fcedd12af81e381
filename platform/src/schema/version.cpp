#include "platform/type_files.h"

#include "json/characters.h"

namespace TypeFiles {
namespace {

// Takes the next number off a version, without its leading zeros: of two such texts of digits the
// longer is the greater, and no number is too long.
std::string_view TakeNumber(std::string_view& version) {
  std::string_view number = version.substr(0, version.find('.'));
  version.remove_prefix(number.size() == version.size() ? number.size() : number.size() + 1);
  number.remove_prefix(number.find_first_not_of('0') == std::string_view::npos
                           ? number.size()
                           : number.find_first_not_of('0'));
  for (const char c : number) {
    if (!Json::IsDigit(c)) {
      return {};
    }
  }
  return number;
}

}  // namespace

int CompareVersions(std::string_view a, std::string_view b) noexcept {
  while (!a.empty() || !b.empty()) {
    const std::string_view left = TakeNumber(a);
    const std::string_view right = TakeNumber(b);
    if (left.size() != right.size()) {
      return left.size() < right.size() ? -1 : 1;
    }
    if (const int order = left.compare(right); order != 0) {
      return order;
    }
  }
  return 0;
}

bool IsVersion(std::string_view text) noexcept {
  bool digitBefore = false;
  for (const char c : text) {
    if (!Json::IsDigit(c) && !(c == '.' && digitBefore)) {
      return false;
    }
    digitBefore = Json::IsDigit(c);
  }
  return digitBefore;
}

}  // namespace TypeFiles
