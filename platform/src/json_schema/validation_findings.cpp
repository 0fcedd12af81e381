#include "json_schema/validation_findings.h"

#include "json/pointer.h"
#include "json/utf8.h"

#include <algorithm>

namespace JsonValidator {

void AppendFinding(Json::Document& result, std::string_view field, std::string_view error) {
  Json::Allocator& allocator = result.GetAllocator();
  Json::Value finding(rapidjson::kObjectType);
  finding.AddMember(Json::Reference("field"), Json::Copy(field, allocator), allocator);
  finding.AddMember(Json::Reference("error"), Json::Copy(error, allocator), allocator);
  result.PushBack(finding, allocator);
}

void Findings::Add(const Place& place, std::string_view error) {
  std::vector<const Place*> way;
  for (const Place* step = &place; step->parent != nullptr; step = step->parent) {
    way.push_back(step);
  }
  Finding finding;
  finding.order.reserve(way.size());
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    finding.order.push_back((*step)->index);
    const Json::Value* name = (*step)->name;
    Json::AppendToken(finding.field, name != nullptr ? Json::Utf8::Repaired(Json::Text(*name))
                                                     : std::to_string((*step)->index));
  }
  if (finding.field.empty()) {
    finding.field += '/';
  }
  finding.error = Json::Utf8::Repaired(error);
  findings_.push_back(std::move(finding));
}

const std::vector<Findings::Finding>& Findings::Sorted() {
  std::stable_sort(findings_.begin(), findings_.end(),
                   [](const Finding& a, const Finding& b) { return a.order < b.order; });
  std::vector<Finding> distinct;
  std::size_t sameOrder = 0;  // first of the findings kept for the place at hand
  for (Finding& finding : findings_) {
    if (!distinct.empty() && distinct.back().order != finding.order) {
      sameOrder = distinct.size();
    }
    const auto begin = distinct.begin() + static_cast<std::ptrdiff_t>(sameOrder);
    if (std::none_of(begin, distinct.end(),
                     [&](const Finding& other) { return other.error == finding.error; })) {
      distinct.push_back(std::move(finding));
    }
  }
  findings_ = std::move(distinct);
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
