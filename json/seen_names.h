// Finding names that an object has twice.
#pragma once

#include "json/json.h"

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace Json {

/// A set of names that answers for a handful of them without allocating: most objects are small,
/// and their names differ in length or at their ends.
class SeenNames {
 public:
  explicit SeenNames(const Value& object) : object_(object) {}

  /// Notes the name of the member at this index, and tells whether a member before has it, too.
  bool Note(std::string_view name, rapidjson::SizeType index) {
    constexpr rapidjson::SizeType kFew = 32;
    if (index >= kFew) {
      if (many_.empty()) {
        for (rapidjson::SizeType i = 0; i < index; ++i) {
          many_.insert(NameAt(i));
        }
      }
      return !many_.insert(name).second;
    }
    const std::uint64_t bit = BitOf(name);
    const bool maybeSeen = (bits_ & bit) != 0;
    bits_ |= bit;
    for (rapidjson::SizeType i = 0; maybeSeen && i < index; ++i) {
      if (NameAt(i) == name) {
        return true;
      }
    }
    return false;
  }

 private:
  static std::uint64_t BitOf(std::string_view name) {
    if (name.empty()) {
      return 1;
    }
    const auto byte = [&](std::size_t i) {
      return std::size_t{static_cast<unsigned char>(name[i])};
    };
    const std::size_t mix =
        name.size() * 7 + byte(0) * 31 + byte(name.size() / 2) * 3 + byte(name.size() - 1);
    return std::uint64_t{1} << (mix % 64);
  }

  std::string_view NameAt(rapidjson::SizeType index) const {
    return Text((object_.MemberBegin() + static_cast<std::ptrdiff_t>(index))->name);
  }

  const Value& object_;
  std::uint64_t bits_ = 0;
  std::unordered_set<std::string_view> many_;
};

}  // namespace Json
