// Finding positions by the texts that stand there.
#pragma once

#include "json/json.h"

#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Json {

/// Objects with fewer members, and lists with fewer elements, are walked through faster than an
/// index of them is made and asked.
constexpr rapidjson::SizeType kWorthAnIndex = 48;

/// Positions in a list by their texts, several of which may be equal. Keeps no texts, which move
/// when a value grows: whoever asks is asked back what stands at a position.
class TextIndex {
 public:
  static constexpr rapidjson::SizeType kNowhere = static_cast<rapidjson::SizeType>(-1);

  void Add(std::string_view text, rapidjson::SizeType position) {
    positions_.emplace(Hash(text), position);
  }
  void Reserve(std::size_t count) { positions_.reserve(count); }

  /// Says that a text that was added stands elsewhere now, or is gone where that is kNowhere.
  void Move(std::string_view text, rapidjson::SizeType from, rapidjson::SizeType to) {
    const auto [first, last] = positions_.equal_range(Hash(text));
    for (auto entry = first; entry != last; ++entry) {
      if (entry->second != from) {
        continue;
      }
      if (to == kNowhere) {
        positions_.erase(entry);
      } else {
        entry->second = to;
      }
      return;
    }
  }

  /// The first position of a text, or kNowhere.
  /// \param stands  tells whether the text stands at a position
  template <class Stands>
  rapidjson::SizeType Find(std::string_view text, const Stands& stands) const {
    rapidjson::SizeType found = kNowhere;
    const auto [first, last] = positions_.equal_range(Hash(text));
    for (auto entry = first; entry != last; ++entry) {
      if (entry->second < found && stands(entry->second)) {
        found = entry->second;
      }
    }
    return found;
  }

 private:
  static std::size_t Hash(std::string_view text) { return std::hash<std::string_view>()(text); }

  std::unordered_multimap<std::size_t, rapidjson::SizeType> positions_;
};

}  // namespace Json
