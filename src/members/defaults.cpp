#include "members/defaults.h"

#include "members/member_places.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TarnConfigStore {
namespace {

class Filling {
 public:
  explicit Filling(Json::Allocator& allocator) : allocator_(allocator) {}

  void Fill(Json::Value& value, Json::SchemaPlace place, std::size_t depth) {
    if (!place || depth == Json::kMaxDepth) {
      return;
    }
    if (value.IsArray()) {
      for (Json::Value& element : value.GetArray()) {
        Fill(element, place.Items(), depth + 1);
      }
    } else if (value.IsObject()) {
      place.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
        FillMember(value, name, property, depth + 1);
      });
    }
  }

  bool HasPut() const { return put_ > 0; }

 private:
  void FillMember(Json::Value& object, std::string_view name, Json::SchemaPlace property,
                  std::size_t depth) {
    Json::Value* member = Json::FindMember(object, name);
    if (member != nullptr && !member->IsNull()) {
      Fill(*member, property, depth);
      return;
    }
    if (!property.HoldsDefaults()) {
      return;
    }
    Json::Value absent = Absent(property, depth);
    if (absent.IsNull()) {
      return;
    }
    if (member != nullptr) {
      *member = absent;
    } else {
      Json::AddMember(object, Json::Copy(name, allocator_), std::move(absent), allocator_);
    }
  }

  // What stands where there is nothing: its default, or an object of those of its members.
  Json::Value Absent(Json::SchemaPlace property, std::size_t depth) {
    const Json::Value* own = property.Default();
    Json::Value value;
    if (own != nullptr && !own->IsNull()) {
      value.CopyFrom(*own, allocator_);
      Count();
    } else if (property.DescribesObject()) {
      value.SetObject();
    } else {
      return value;
    }
    if (std::find(around_.begin(), around_.end(), property.Schema()) == around_.end()) {
      around_.push_back(property.Schema());
      Fill(value, property, depth);
      around_.pop_back();
    }
    const bool holdsNothing = own == nullptr && value.ObjectEmpty();
    return holdsNothing ? Json::Value() : std::move(value);
  }

  void Count() {
    if (++put_ > kMostMembers) {
      FailWithTooMany();
    }
  }

  Json::Allocator& allocator_;
  std::vector<const Json::Value*> around_;
  std::size_t put_ = 0;
};

}  // namespace

bool FillDefaults(Json::Value& data, Json::SchemaPlace place, Json::Allocator& allocator) {
  Filling filling(allocator);
  filling.Fill(data, place, 0);
  return filling.HasPut();
}

}  // namespace TarnConfigStore
