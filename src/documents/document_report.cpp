#include "tarnconfigstore/documents.h"

#include "json/json.h"
#include "json/print.h"

#include <algorithm>
#include <array>

namespace TarnConfigStore {
namespace {

constexpr std::array<const char*, 6> kOutcomes = {"unchanged", "created", "replaced",
                                                  "removed",   "staged",  "refused"};

std::string NameOf(const ConfigStoreObjectId& id) {
  std::string name = id.component + "/" + id.group + "/" + id.key;
  return id.instanceId.empty() ? name : name + "/" + id.instanceId;
}

void AddErrors(const std::vector<ErrorInfo>& findings, Json::Value& object,
               Json::Allocator& allocator) {
  Json::Value errors(rapidjson::kArrayType);
  for (const ErrorInfo& finding : findings) {
    Json::Value error(rapidjson::kObjectType);
    error.AddMember("field", Json::Copy(finding.field, allocator), allocator);
    error.AddMember("error", Json::Copy(finding.error, allocator), allocator);
    errors.PushBack(error, allocator);
  }
  object.AddMember("errors", errors, allocator);
}

}  // namespace

bool DocumentReport::Fits() const {
  return findings.empty() &&
         std::none_of(objects.begin(), objects.end(), [](const ObjectResult& object) {
           return object.outcome == ObjectOutcome::REFUSED;
         });
}

bool DocumentReport::Changes() const {
  return std::any_of(objects.begin(), objects.end(), [](const ObjectResult& object) {
    return object.outcome != ObjectOutcome::UNCHANGED && object.outcome != ObjectOutcome::REFUSED;
  });
}

std::string DocumentReport::ToJson() const {
  Json::Document document(rapidjson::kArrayType);
  Json::Allocator& allocator = document.GetAllocator();
  if (!findings.empty()) {
    Json::Value own(rapidjson::kObjectType);
    own.AddMember("outcome", Json::Reference("refused"), allocator);
    AddErrors(findings, own, allocator);
    document.PushBack(own, allocator);
  }
  for (const ObjectResult& result : objects) {
    Json::Value object(rapidjson::kObjectType);
    object.AddMember("object", Json::Copy(NameOf(result.id), allocator), allocator);
    object.AddMember(
        "outcome", Json::Reference(kOutcomes[static_cast<std::size_t>(result.outcome)]), allocator);
    if (!result.findings.empty()) {
      AddErrors(result.findings, object, allocator);
    }
    document.PushBack(object, allocator);
  }
  std::string text;
  // Ids may be older than what is asked of them today.
  Json::Print(document, Json::Layout::ONE_LINE, Json::BadText::REPAIRED, text);
  return text;
}

}  // namespace TarnConfigStore
