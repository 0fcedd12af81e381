#include "yaml/yaml_lines.h"

#include "json/pointer.h"

#include <string>

namespace tarnctl {
namespace {

// The place among the members or elements of what a name stands for; the number of them where it
// stands for none.
rapidjson::SizeType PlaceOf(const Json::Value& value, const std::string& name) {
  if (value.IsArray()) {
    const Json::Value* element = Json::FindAt(value, {name});
    return element != nullptr ? static_cast<rapidjson::SizeType>(element - value.Begin())
                              : value.Size();
  }
  rapidjson::SizeType place = 0;
  while (place < value.MemberCount() && Json::Text((value.MemberBegin() + place)->name) != name) {
    ++place;
  }
  return place;
}

}  // namespace

std::size_t YamlLines::Open(std::size_t line) {
  values_.push_back({static_cast<std::uint32_t>(line), 0});
  return values_.size() - 1;
}

std::size_t YamlLines::Find(const Json::Value& root, std::string_view pointer) const {
  const auto names = Json::ParsePointer(pointer);
  if (!names || values_.empty()) {
    return 0;
  }
  const Json::Value* value = &root;
  std::size_t entry = 0;
  for (const std::string& name : *names) {
    if (!value->IsObject() && !value->IsArray()) {
      break;
    }
    const rapidjson::SizeType place = PlaceOf(*value, name);
    if (place == (value->IsArray() ? value->Size() : value->MemberCount())) {
      break;
    }
    ++entry;
    for (rapidjson::SizeType before = 0; before < place; ++before) {
      entry = values_[entry].end;
    }
    value = value->IsArray() ? &(*value)[place] : &(value->MemberBegin() + place)->value;
  }
  return values_[entry].line;
}

}  // namespace tarnctl
