#include "json/secrets.h"

#include "json/equality.h"
#include "json/pointer.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace Json {
namespace {

using rapidjson::SizeType;

bool IsMask(const Value& value) {
  return value.IsString() && Text(value) == kMask;
}

// Calls `visit(value, place, name, index)` for each value below that may be or hold a secret; the pointer
// leads there meanwhile.
template <class Any, class Visit>
void ForEachBelow(Any& value, SchemaPlace place, std::string& pointer, const Visit& visit) {
  const std::size_t length = pointer.size();
  if (value.IsObject()) {
    for (auto& member : value.GetObject()) {
      const SchemaPlace property = place.Property(Text(member.name));
      if (property.HoldsSecrets()) {
        AppendToken(pointer, Text(member.name));
        visit(member.value, property, Text(member.name), SizeType{0});
        pointer.resize(length);
      }
    }
  } else if (value.IsArray() && place.Items().HoldsSecrets()) {
    SizeType index = 0;
    for (auto& element : value.GetArray()) {
      AppendToken(pointer, std::to_string(index));
      visit(element, place.Items(), std::string_view(), index++);
      pointer.resize(length);
    }
  }
}

void SortMembers(Value& value) {
  if (value.IsArray()) {
    for (Value& element : value.GetArray()) {
      SortMembers(element);
    }
  } else if (value.IsObject()) {
    for (auto& member : value.GetObject()) {
      SortMembers(member.value);
    }
    std::sort(value.MemberBegin(), value.MemberEnd(),
              [](const auto& a, const auto& b) { return Text(a.name) < Text(b.name); });
  }
}

// What is shown of a value.
Document Shown(const Value& value, SchemaPlace place) {
  Document shown;
  shown.CopyFrom(value, shown.GetAllocator());
  std::string pointer;
  MaskSecrets(shown, place, shown.GetAllocator(), pointer, {});
  ClearGeneratedIds(shown);
  return shown;
}

// Finds the elements of a stored list.
class Elements {
 public:
  Elements(const Value& list, const Value* stored, SchemaPlace items)
      : list_(list),
        stored_(stored != nullptr && stored->IsArray() ? stored : nullptr),
        items_(items),
        idMember_(items.ShownIdMember()) {}

  const Value* StoredOf(SizeType index) const {
    if (stored_ == nullptr) {
      return nullptr;
    }
    if (!idMember_.empty()) {
      return WithIdOf(list_[index]);
    }
    if (items_.IsSecret()) {
      return list_.Size() == stored_->Size() ? &(*stored_)[index] : nullptr;
    }
    return ShownAs(list_[index]);
  }

 private:
  const Value* WithIdOf(const Value& element) const {
    const Value* id = FindMember(element, idMember_);
    for (const Value& other : stored_->GetArray()) {
      const Value* otherId = FindMember(other, idMember_);
      if (id != nullptr && otherId != nullptr && Equal(*id, *otherId)) {
        return &other;
      }
    }
    return nullptr;
  }

  // What is shown is made once of each stored element, and looked for by its text.
  const Value* ShownAs(const Value& element) const {
    if (byText_.empty()) {
      for (const Value& other : stored_->GetArray()) {
        const auto [known, isNew] = byText_.try_emplace(ShownText(other), &other);
        if (!isNew && known->second != nullptr && !Equal(*known->second, other)) {
          known->second = nullptr;  // either may be meant
        }
      }
    }
    const auto found = byText_.find(ShownText(element));
    return found == byText_.end() ? nullptr : found->second;
  }

  std::string ShownText(const Value& element) const {
    Document shown = Shown(element, items_);
    SortMembers(shown);
    std::string text;
    Serialize(shown, text);
    return text;
  }

  const Value& list_;
  const Value* stored_;
  SchemaPlace items_;
  std::string_view idMember_;
  mutable std::unordered_map<std::string, const Value*> byText_;
};

}  // namespace

std::string TextWithMasks(const Value& value, SchemaPlace place) {
  std::string text;
  if (place.HoldsSecrets() || HasGeneratedId(value)) {
    Serialize(Shown(value, place), text);
  } else {
    Serialize(value, text);
  }
  return text;
}

Sight Sight::Token(std::string_view token) const {
  const bool isIndex = !token.empty() && std::all_of(token.begin(), token.end(), [](char digit) {
    return digit >= '0' && digit <= '9';
  });
  return isIndex && at_.Items() && !at_.Property(token) ? Element() : Member(token);
}

std::string ShownPointer(std::string_view pointer, SchemaPlace root) {
  const auto tokens = root.HoldsSecrets() ? ParsePointer(pointer) : std::nullopt;
  if (!tokens) {
    return std::string(pointer);
  }
  std::string shown;
  Sight sight(root);
  for (const std::string& token : *tokens) {
    sight = sight.Token(token);
    AppendToken(shown, sight.HidesName() ? kMask : token);
  }
  return shown;
}

void MaskSecrets(Value& value, SchemaPlace place, Allocator& allocator, std::string& pointer,
                 const std::function<void(const std::string&)>& masked) {
  if (place.IsSecret()) {
    if (!value.IsNull()) {
      value = Copy(kMask, allocator);
      if (masked) {
        masked(pointer);
      }
    }
    return;
  }
  ForEachBelow(value, place, pointer, [&](Value& below, SchemaPlace there, auto, auto) {
    MaskSecrets(below, there, allocator, pointer, masked);
  });
}

void RestoreSecrets(Value& value, const Value* stored, SchemaPlace place, Allocator& allocator,
                    std::string& pointer, const MaskedText& masks) {
  if (place.IsSecret()) {
    if (!IsMask(value)) {
      return;
    }
    if (!masks.isMasked(pointer)) {
      masks.refuse(pointer,
                   "\"***\" stands for a secret, but is not listed as redacted: give the "
                   "secret itself");
    } else if (stored == nullptr || stored->IsNull()) {
      masks.refuse(pointer,
                   "is masked, and no stored secret can be told to be meant: give the "
                   "secret itself");
    } else {
      CopyInto(value, *stored, allocator);
    }
    return;
  }
  if (value.IsArray()) {
    // Elements are compared as they were given.
    Document given;
    given.CopyFrom(value, given.GetAllocator());
    const Elements elements(given, stored, place.Items());
    ForEachBelow(value, place, pointer, [&](Value& below, SchemaPlace there, auto, SizeType index) {
      RestoreSecrets(below, HoldsMasks(below, there) ? elements.StoredOf(index) : nullptr, there,
                     allocator, pointer, masks);
    });
    return;
  }
  ForEachBelow(value, place, pointer,
               [&](Value& below, SchemaPlace there, std::string_view name, auto) {
                 RestoreSecrets(below, stored == nullptr ? nullptr : FindMember(*stored, name),
                                there, allocator, pointer, masks);
               });
}

bool HoldsMasks(const Value& value, SchemaPlace place) {
  if (!place.HoldsSecrets()) {
    return false;
  }
  if (place.IsSecret()) {
    return IsMask(value);
  }
  bool holds = false;
  std::string pointer;
  ForEachBelow(value, place, pointer, [&](const Value& below, SchemaPlace there, auto, auto) {
    holds = holds || HoldsMasks(below, there);
  });
  return holds;
}

}  // namespace Json
