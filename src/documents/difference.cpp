#include "documents/difference.h"

#include "json/instance_ids.h"
#include "json/pointer.h"
#include "objects/generated_ids.h"
#include "objects/named_places.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace TarnConfigStore {
namespace {

class Comparison {
 public:
  explicit Comparison(const DifferenceVisitor& visit) : visit_(visit) {}

  void Compare(const Json::Value* expected, const Json::Value* found, Json::SchemaPlace place,
               const std::string& pointer) {
    expected = expected != nullptr && expected->IsNull() ? nullptr : expected;
    found = found != nullptr && found->IsNull() ? nullptr : found;
    if (expected == nullptr && found == nullptr) {
      return;
    }
    if (expected != nullptr && found != nullptr) {
      if (expected->IsObject() && found->IsObject() && !place.IsSecret()) {
        CompareObjects(*expected, *found, place, pointer);
        return;
      }
      if (EqualButForGeneratedIds(*expected, *found)) {
        return;
      }
      if (expected->IsArray() && found->IsArray() && !place.IsSecret() &&
          CompareInstances(*expected, *found, place, pointer)) {
        return;
      }
    }
    visit_(pointer, expected, found, place);
  }

 private:
  void CompareObjects(const Json::Value& expected, const Json::Value& found,
                      Json::SchemaPlace place, const std::string& pointer) {
    for (const auto& member : expected.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (!IsGenerated(name, place)) {
        Compare(&member.value, Json::FindMember(found, name), place.Property(name),
                Json::PointerBelow(pointer, name));
      }
    }
    for (const auto& member : found.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (!IsGenerated(name, place) && Json::FindMember(expected, name) == nullptr) {
        Compare(nullptr, &member.value, place.Property(name), Json::PointerBelow(pointer, name));
      }
    }
  }

  static bool IsGenerated(std::string_view name, Json::SchemaPlace place) {
    return place.GetsGeneratedId() && name == Json::kGeneratedInstanceId;
  }

  bool CompareInstances(const Json::Value& expected, const Json::Value& found,
                        Json::SchemaPlace place, const std::string& pointer) {
    const std::string_view idMember = place.Items().ShownIdMember();
    if (idMember.empty()) {
      return false;
    }
    const auto idsWanted = Json::InstanceIdsOf(expected, idMember);
    const auto idsThere = Json::InstanceIdsOf(found, idMember);
    if (!idsWanted || !idsThere) {
      return false;
    }
    const std::vector<std::string_view>& wanted = *idsWanted;
    const std::vector<std::string_view>& there = *idsThere;
    if (wanted != there &&
        std::is_permutation(wanted.begin(), wanted.end(), there.begin(), there.end())) {
      return false;
    }
    std::unordered_map<std::string_view, rapidjson::SizeType> places;
    for (rapidjson::SizeType i = 0; i < found.Size(); ++i) {
      places.emplace(there[i], i);
    }
    for (rapidjson::SizeType i = 0; i < expected.Size(); ++i) {
      const auto at = places.find(wanted[i]);
      Compare(&expected[i], at == places.end() ? nullptr : &found[at->second], place.Items(),
              Json::PointerBelow(pointer, wanted[i]));
      if (at != places.end()) {
        places.erase(at);
      }
    }
    for (rapidjson::SizeType i = 0; i < found.Size(); ++i) {
      if (places.count(there[i]) != 0) {
        Compare(nullptr, &found[i], place.Items(), Json::PointerBelow(pointer, there[i]));
      }
    }
    return true;
  }

  const DifferenceVisitor& visit_;
};

}  // namespace

void FindDifferences(const Json::Value* expected, const Json::Value* found, Json::SchemaPlace place,
                     const std::string& pointer, const DifferenceVisitor& visit) {
  Comparison(visit).Compare(expected, found, place, pointer);
}

}  // namespace TarnConfigStore
