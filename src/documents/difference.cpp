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
  Comparison(const std::string& pointer, const DifferenceVisitor& visit)
      : visit_(visit), pointer_(pointer) {}

  void Compare(const Json::Value* expected, const Json::Value* found, Json::SchemaPlace place) {
    expected = expected != nullptr && expected->IsNull() ? nullptr : expected;
    found = found != nullptr && found->IsNull() ? nullptr : found;
    if (expected == nullptr && found == nullptr) {
      return;
    }
    if (expected != nullptr && found != nullptr) {
      if (expected->IsObject() && found->IsObject() && !place.IsSecret()) {
        CompareObjects(*expected, *found, place);
        return;
      }
      if (EqualButForGeneratedIds(*expected, *found)) {
        return;
      }
      if (expected->IsArray() && found->IsArray() && !place.IsSecret() &&
          CompareInstances(*expected, *found, place)) {
        return;
      }
    }
    visit_(pointer_, expected, found, place);
  }

 private:
  void CompareBelow(std::string_view name, const Json::Value* expected, const Json::Value* found,
                    Json::SchemaPlace place) {
    const std::size_t above = pointer_.size();
    Json::AppendToken(pointer_, name);
    Compare(expected, found, place);
    pointer_.resize(above);
  }

  void CompareObjects(const Json::Value& expected, const Json::Value& found,
                      Json::SchemaPlace place) {
    for (const auto& member : expected.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (!IsGenerated(name, place)) {
        CompareBelow(name, &member.value, Json::FindMember(found, name), place.Property(name));
      }
    }
    for (const auto& member : found.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (!IsGenerated(name, place) && Json::FindMember(expected, name) == nullptr) {
        CompareBelow(name, nullptr, &member.value, place.Property(name));
      }
    }
  }

  static bool IsGenerated(std::string_view name, Json::SchemaPlace place) {
    return place.GetsGeneratedId() && name == Json::kGeneratedInstanceId;
  }

  bool CompareInstances(const Json::Value& expected, const Json::Value& found,
                        Json::SchemaPlace place) {
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
      CompareBelow(wanted[i], &expected[i], at == places.end() ? nullptr : &found[at->second],
                   place.Items());
      if (at != places.end()) {
        places.erase(at);
      }
    }
    for (rapidjson::SizeType i = 0; i < found.Size(); ++i) {
      if (places.count(there[i]) != 0) {
        CompareBelow(there[i], nullptr, &found[i], place.Items());
      }
    }
    return true;
  }

  const DifferenceVisitor& visit_;
  std::string pointer_;  // of the place
};

}  // namespace

void FindDifferences(const Json::Value* expected, const Json::Value* found, Json::SchemaPlace place,
                     const std::string& pointer, const DifferenceVisitor& visit) {
  Comparison(pointer, visit).Compare(expected, found, place);
}

}  // namespace TarnConfigStore
