#include "documents/empty_elements.h"

#include "json/pointer.h"

namespace TarnConfigStore {

void FindEmptyElements(const Json::Value& value, Json::SchemaPlace place,
                       const std::string& pointer, std::vector<ErrorInfo>& findings) {
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      if (Json::IsContainer(member.value)) {
        const std::string_view name = Json::Text(member.name);
        FindEmptyElements(member.value, place.Property(name), Json::PointerBelow(pointer, name),
                          findings);
      }
    }
    return;
  }
  const Json::SchemaPlace items = place.Items();
  const bool holdsInstances = !items.InstanceIdMember().empty();
  for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
    if (holdsInstances && value[i].IsObject() && value[i].ObjectEmpty()) {
      findings.push_back({Json::PointerBelow(pointer, std::to_string(i)),
                          "holds nothing that could be stored: leave the element out"});
    } else if (Json::IsContainer(value[i])) {
      FindEmptyElements(value[i], items, Json::PointerBelow(pointer, std::to_string(i)), findings);
    }
  }
}

}  // namespace TarnConfigStore
