#include "json_schema/validation_findings.h"

#include "json/utf8.h"

#include <algorithm>
#include <unordered_set>

namespace JsonValidator {

void AppendFinding(Json::Document& result, std::string_view field, std::string_view error) {
  Json::Allocator& allocator = result.GetAllocator();
  Json::Value finding(rapidjson::kObjectType);
  finding.AddMember(Json::Reference("field"), Json::Copy(field, allocator), allocator);
  finding.AddMember(Json::Reference("error"), Json::Copy(error, allocator), allocator);
  result.PushBack(finding, allocator);
}

void Findings::Add(const Place& place, std::string_view error) {
  Finding finding{
      {}, FieldOf(place, root_), Json::Utf8::WithoutControls(Json::Utf8::Repaired(error))};
  for (const Place* step = &place; step->parent != nullptr; step = step->parent) {
    finding.order.push_back(step->index);
  }
  std::reverse(finding.order.begin(), finding.order.end());
  findings_.push_back(std::move(finding));
}

const std::vector<Findings::Finding>& Findings::Sorted() {
  std::stable_sort(findings_.begin(), findings_.end(),
                   [](const Finding& a, const Finding& b) { return a.order < b.order; });
  std::unordered_set<std::string> told;
  std::erase_if(findings_, [&](const Finding& finding) {
    return !told.insert(finding.field + '\0' + finding.error).second;
  });
  return findings_;
}

void Findings::Write(Json::Document& result) {
  result.SetArray();
  if (Empty()) {
    return;
  }
  for (const Finding& finding : Sorted()) {
    AppendFinding(result, finding.field, finding.error);
  }
}

}  // namespace JsonValidator
