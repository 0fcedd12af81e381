#include "schema/type_documents.h"

#include "json/number_kinds.h"

#include <set>
#include <vector>

namespace TarnSchemaStore {

namespace {

using TarnConfigStore::JsonDoc;

constexpr std::size_t kUsualSize = 256;

// An object that is made with its first member. Everything is copied into it: objects keep these
// documents for longer than the type lives.
class LazyObject {
 public:
  void AddText(std::string_view name, std::string_view text) {
    Add(name, Json::Copy(text, Allocator()));
  }
  // The value's texts are its own, as those of parsed documents are.
  void AddCopy(std::string_view name, const Json::Value& value, Json::SchemaPlace place) {
    Json::Value copy;
    copy.CopyFrom(value, Allocator());
    Json::SettleNumbers(copy, place);
    Add(name, std::move(copy));
  }
  bool Has(std::string_view name) const {
    return document_ && Json::FindMember(*document_->GetJsonValuePtr(), name) != nullptr;
  }
  std::shared_ptr<JsonDoc> Take() { return std::move(document_); }

 private:
  Json::Allocator& Allocator() {
    if (!document_) {
      document_ = JsonDoc::Make(kUsualSize);
      document_->GetJsonValuePtr()->SetObject();
    }
    return document_->GetAllocator();
  }
  void Add(std::string_view name, Json::Value value) {
    document_->GetJsonValuePtr()->AddMember(Json::Copy(name, Allocator()), value, Allocator());
  }

  std::shared_ptr<JsonDoc> document_;
};

}  // namespace

std::shared_ptr<JsonDoc> MakeIdMap(Json::SchemaPlace place, std::string_view key,
                                   std::string_view idMember) {
  LazyObject map;
  if (!idMember.empty()) {
    map.AddText(key, idMember);
  }
  // Level by level; schemas may contain themselves, so that each is looked at once.
  std::vector<Json::SchemaPlace> level = {place};
  std::set<const Json::Value*> seen = {place.Schema()};
  for (std::size_t i = 0; i < level.size(); ++i) {
    const Json::SchemaPlace here = level[i];  // the list grows, and moves, meanwhile
    here.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
      const std::string_view member = property.Items().InstanceIdMember();
      // An entry of the key's name would make a type without instances look like one that has them.
      if (!member.empty() && name != key && !map.Has(name)) {
        map.AddText(name, member);
      }
      for (Json::SchemaPlace at = property; at && seen.insert(at.Schema()).second;
           at = at.Items()) {
        level.push_back(at);
      }
    });
  }
  return map.Take();
}

std::shared_ptr<JsonDoc> MakeDefaults(Json::SchemaPlace place) {
  LazyObject defaults;
  place.ForEachProperty([&](std::string_view name, Json::SchemaPlace property) {
    if (const Json::Value* value = property.Default()) {
      defaults.AddCopy(name, *value, property);
    }
  });
  return defaults.Take();
}

}  // namespace TarnSchemaStore
