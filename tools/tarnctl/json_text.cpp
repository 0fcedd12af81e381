#include "json_text.h"

#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarnctl {
namespace {

constexpr int kMaximumDepth = 128;

/// Follows a parse and refuses what the parser lets pass.
class StrictnessCheck {
 public:
  bool operator()(int depth, Json::parse_event_t event, Json& value) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        if (depth >= kMaximumDepth) {
          throw std::invalid_argument("nests deeper than 128 levels");
        }
        membersSeen_.emplace_back();
        break;
      case Json::parse_event_t::object_end:
      case Json::parse_event_t::array_end:
        membersSeen_.pop_back();
        break;
      case Json::parse_event_t::key:
        if (const auto& name = value.get_ref<const std::string&>();
            !membersSeen_.back().insert(name).second) {
          throw std::invalid_argument("names the member \"" + name + "\" twice");
        }
        break;
      case Json::parse_event_t::value:
        break;
    }
    return true;
  }

 private:
  std::vector<std::set<std::string>> membersSeen_;
};

// "[json.exception.parse_error.101] parse error at line 1, column 2: ..." without its first part.
std::string Reason(const Json::parse_error& error) {
  const std::string text = error.what();
  const std::size_t start = text.find("] ");
  return start == std::string::npos ? text : text.substr(start + 2);
}

}  // namespace

Json ParseStrictly(std::string_view text) {
  // The parser takes NUL for the end of the text, and so would whoever takes the text as a C
  // string.
  if (text.find('\0') != std::string_view::npos) {
    throw std::invalid_argument("holds a NUL byte");
  }
  StrictnessCheck check;
  try {
    return Json::parse(text, [&check](int depth, Json::parse_event_t event, Json& value) {
      return check(depth, event, value);
    });
  } catch (const Json::parse_error& error) {
    throw std::invalid_argument(Reason(error));
  } catch (const Json::out_of_range& error) {
    throw std::invalid_argument("holds a number that is out of range");
  }
}

}  // namespace tarnctl
