#include "json_maker.h"
#include "shown/member_text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace tarnctl {
namespace {

using TarnConfigStore::MemberLimit;

// Two keywords that are told of as one range, of something.
struct Range {
  const char* least;
  const char* most;
  const char* unit;
};
constexpr std::array<Range, 4> kRanges = {{{"minimum", "maximum", ""},
                                           {"minLength", "maxLength", " characters"},
                                           {"minItems", "maxItems", " elements"},
                                           {"minProperties", "maxProperties", " members"}}};

std::string Values(const std::string& list) {
  JsonMaker make;
  std::string text;
  const Json::Value values = make.Parse(list);
  if (!values.IsArray()) {
    return list;
  }
  for (const Json::Value& value : values.GetArray()) {
    std::string one;
    Json::Serialize(value, one);
    text += (text.empty() ? "" : ", ") + one;
  }
  return text;
}

std::string Plain(const std::string& json) {
  JsonMaker make;
  const Json::Value value = make.Parse(json);
  return value.IsString() ? std::string(Json::Text(value)) : json;
}

std::string Single(const MemberLimit& limit) {
  const std::string& keyword = limit.keyword;
  if (keyword == "exclusiveMinimum") {
    return "more than " + limit.value;
  }
  if (keyword == "exclusiveMaximum") {
    return "less than " + limit.value;
  }
  if (keyword == "multipleOf") {
    return "a multiple of " + limit.value;
  }
  if (keyword == "enum") {
    return "one of " + Values(limit.value);
  }
  if (keyword == "const") {
    return limit.value;
  }
  if (keyword == "pattern") {
    return "matches " + Plain(limit.value);
  }
  if (keyword == "format") {
    return "a text of format " + Plain(limit.value);
  }
  if (keyword == "uniqueItems") {
    return "no element twice";
  }
  return keyword + " " + limit.value;
}

// All of those that hold always, or only sometimes.
class LimitWords {
 public:
  LimitWords(const std::vector<MemberLimit>& limits, bool always)
      : limits_(limits), always_(always), isTold_(limits.size()) {}

  std::string Text() {
    for (std::size_t i = 0; i < limits_.size(); ++i) {
      if (limits_[i].always != always_ || isTold_[i]) {
        continue;
      }
      isTold_[i] = true;
      words_ += (words_.empty() ? "" : ", ") + RangeFrom(i).value_or(Single(limits_[i]));
    }
    return std::move(words_);
  }

 private:
  std::optional<std::string> RangeFrom(std::size_t at) {
    const std::string_view keyword = limits_[at].keyword;
    for (const Range& range : kRanges) {
      if (keyword != range.least && keyword != range.most) {
        continue;
      }
      const bool isLeast = keyword == range.least;
      const std::string* other = TakeNext(isLeast ? range.most : range.least);
      const std::string& own = limits_[at].value;
      if (other == nullptr) {
        return (isLeast ? "at least " : "at most ") + own + range.unit;
      }
      return (isLeast ? own : *other) + " to " + (isLeast ? *other : own) + range.unit;
    }
    return std::nullopt;
  }

  const std::string* TakeNext(std::string_view keyword) {
    for (std::size_t i = 0; i < limits_.size(); ++i) {
      if (!isTold_[i] && limits_[i].always == always_ && limits_[i].keyword == keyword) {
        isTold_[i] = true;
        return &limits_[i].value;
      }
    }
    return nullptr;
  }

  const std::vector<MemberLimit>& limits_;
  const bool always_;
  std::vector<bool> isTold_;
  std::string words_;
};

}  // namespace

std::string DescribeLimits(const std::vector<MemberLimit>& limits) {
  std::string always = LimitWords(limits, true).Text();
  const std::string sometimes = LimitWords(limits, false).Text();
  if (sometimes.empty()) {
    return always;
  }
  return always + (always.empty() ? "" : "; ") + "in some cases: " + sometimes;
}

}  // namespace tarnctl
