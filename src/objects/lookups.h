// Finding members of large objects, and instances in large lists.
#pragma once

#include "json/text_index.h"

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace TarnConfigStore {

/// What is known of where members and instances are in the data of one whole object. An object or a
/// list gets an index once walking through it has cost as much. An index belongs to the place of
/// the members or elements in memory, which no other ever gets while the data's document lives.
///
/// Whoever changes a name or an id, or moves what has one, calls Forget, or Added and Removed:
/// another number of members or elements is noticed, nothing else is. Threads may search at once;
/// who finds another at it walks instead, so that nobody waits, least of all the child of a fork
/// for a thread that it does not have.
class Lookups {
 public:
  using Position = rapidjson::SizeType;
  static constexpr Position kNowhere = Json::TextIndex::kNowhere;

  /// The first member of a name.
  Position FindMember(const Json::Value& object, std::string_view name);
  /// The first element of an array whose id member holds a text.
  Position FindInstance(const Json::Value& list, std::string_view idMember, std::string_view id);

  /// A member or an element was added at the end of what was at `before`.
  void MemberAdded(const void* before, const Json::Value& object) noexcept;
  void InstanceAdded(const void* before, const Json::Value& list, std::string_view id) noexcept;
  /// A member is about to be removed, and the last one to take its place.
  void RemovingMember(const Json::Value& object, Position position);

  void Forget();

  /// Where the members of an object or the elements of an array are.
  static const void* PlaceOf(const Json::Value& value);

 private:
  struct Table {
    Position count = 0;
    std::string idMember{};  // empty where it holds members
    std::size_t steps = 0;   // walked before there was an index
    std::optional<Json::TextIndex> index{};
  };
  class Turn;

  template <class TextAt>
  Position Find(const void* place, Position count, std::string_view idMember,
                std::string_view wanted, const TextAt& textAt);
  Table& TableAt(const void* place, Position count, std::string_view idMember);
  void Added(const void* before, const void* after, Position count, std::string_view text) noexcept;

  std::atomic_flag taken_;
  std::unordered_map<const void*, Table> tables_;
};

}  // namespace TarnConfigStore
