#include "objects/lookups.h"

#include "json/instance_ids.h"

#include <new>
#include <utility>

namespace TarnConfigStore {
namespace {

// An index costs about as much as walking through everything this often.
constexpr std::size_t kWalksForAnIndex = 4;
// What was replaced leaves its table behind; nobody uses so many at once.
constexpr std::size_t kTables = 256;

template <class TextAt>
rapidjson::SizeType Walk(rapidjson::SizeType count, std::string_view wanted, const TextAt& textAt) {
  for (rapidjson::SizeType i = 0; i < count; ++i) {
    if (textAt(i) == wanted) {
      return i;
    }
  }
  return Lookups::kNowhere;
}

auto NamesOf(const Json::Value& object) {
  return [members = object.MemberBegin()](rapidjson::SizeType position) {
    return Json::Text((members + static_cast<std::ptrdiff_t>(position))->name);
  };
}

}  // namespace

// The right to look into the tables, or none.
class Lookups::Turn {
 public:
  explicit Turn(Lookups& lookups)
      : lookups_(lookups), mine_(!lookups.taken_.test_and_set(std::memory_order_acquire)) {}
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;
  ~Turn() {
    if (mine_) {
      lookups_.taken_.clear(std::memory_order_release);
    }
  }
  explicit operator bool() const { return mine_; }

 private:
  Lookups& lookups_;
  const bool mine_;
};

const void* Lookups::PlaceOf(const Json::Value& value) {
  return value.IsArray() ? static_cast<const void*>(value.Begin())
                         : static_cast<const void*>(value.MemberBegin().operator->());
}

Lookups::Table& Lookups::TableAt(const void* place, Position count, std::string_view idMember) {
  if (tables_.size() >= kTables) {
    tables_.clear();
  }
  Table& table = tables_[place];
  if (table.count != count || table.idMember != idMember) {
    table = {.count = count, .idMember = std::string(idMember)};
  }
  return table;
}

template <class TextAt>
Lookups::Position Lookups::Find(const void* place, Position count, std::string_view idMember,
                                std::string_view wanted, const TextAt& textAt) {
  const Turn turn(*this);
  if (!turn) {
    return Walk(count, wanted, textAt);
  }
  Table& table = TableAt(place, count, idMember);
  if (table.index) {
    return table.index->Find(wanted, [&](Position position) { return textAt(position) == wanted; });
  }
  const Position found = Walk(count, wanted, textAt);
  table.steps += found == kNowhere ? count : found;
  if (table.steps > kWalksForAnIndex * count) {
    Json::TextIndex index;
    index.Reserve(count);
    for (Position i = 0; i < count; ++i) {
      if (const std::optional<std::string_view> text = textAt(i)) {
        index.Add(*text, i);
      }
    }
    table.index = std::move(index);
  }
  return found;
}

Lookups::Position Lookups::FindMember(const Json::Value& object, std::string_view name) {
  return Find(PlaceOf(object), object.MemberCount(), {}, name, NamesOf(object));
}

Lookups::Position Lookups::FindInstance(const Json::Value& list, std::string_view idMember,
                                        std::string_view id) {
  return Find(PlaceOf(list), list.Size(), idMember, id,
              [&](Position position) { return Json::InstanceIdOf(list[position], idMember); });
}

void Lookups::Added(const void* before, const void* after, Position count,
                    std::string_view text) noexcept {
  const Turn turn(*this);
  if (!turn) {
    return;
  }
  auto table = tables_.extract(before);
  if (table.empty() || table.mapped().count + 1 != count) {
    return;
  }
  try {
    if (table.mapped().index) {
      table.mapped().index->Add(text, count - 1);
    }
    table.mapped().count = count;
    table.key() = after;
    tables_.insert(std::move(table));
  } catch (const std::bad_alloc&) {
    // What was added is there all the same; the table, taken out by now, is made anew.
  }
}

void Lookups::MemberAdded(const void* before, const Json::Value& object) noexcept {
  Added(before, PlaceOf(object), object.MemberCount(), Json::Text((object.MemberEnd() - 1)->name));
}

void Lookups::InstanceAdded(const void* before, const Json::Value& list,
                            std::string_view id) noexcept {
  Added(before, PlaceOf(list), list.Size(), id);
}

void Lookups::RemovingMember(const Json::Value& object, Position position) {
  const Turn turn(*this);
  const auto table = turn ? tables_.find(PlaceOf(object)) : tables_.end();
  if (table == tables_.end()) {
    return;
  }
  const Position last = object.MemberCount() - 1;
  if (!table->second.index || table->second.count != last + 1) {
    tables_.erase(table);
    return;
  }
  const auto nameAt = NamesOf(object);
  table->second.index->Move(nameAt(position), position, kNowhere);
  if (position != last) {
    table->second.index->Move(nameAt(last), last, position);
  }
  table->second.count = last;
}

void Lookups::Forget() {
  if (const Turn turn(*this); turn) {
    tables_.clear();
  }
}

}  // namespace TarnConfigStore
