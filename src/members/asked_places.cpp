#include "members/asked_places.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "json/secrets.h"

#include <algorithm>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr const char* kWholeObject =
    "a member has to be named; to take back all of an object, reset or delete it";
constexpr const char* kInstanceId = "an instance id names its object, and cannot be changed alone";
constexpr const char* kNoIds = "elements of this list have no ids: set the whole list instead";

// Why a place cannot be changed by itself; null where it can.
const char* FaultOf(const PlaceNames& names, Json::SchemaPlace place, const Json::Value& data) {
  if (names.empty()) {
    return kWholeObject;
  }
  const Json::Value* at = &data;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    const bool isLast = i + 1 == names.size();
    const bool isElement = at != nullptr ? at->IsArray() : place.Items() && !place.Property(name);
    if (isElement) {
      if (place.Items().ShownIdMember().empty()) {
        return kNoIds;
      }
      at = at == nullptr ? nullptr : FindInstance(*at, place.Items().ShownIdMember(), name);
      place = place.Items();
    } else {
      if (isLast && place.IsIdMember(name)) {
        return kInstanceId;
      }
      at = at == nullptr ? nullptr : Json::FindMember(*at, name);
      place = place.Property(name);
    }
  }
  return nullptr;
}

}  // namespace

void CheckPlace(const AskedPlace& place, Json::SchemaPlace type, const Json::Value& data,
                std::vector<ErrorInfo>& findings) {
  const char* const fault = FaultOf(place.names, type, data);
  if (fault == nullptr) {
    return;
  }
  std::string field = place.pointer.empty() ? "/" : Json::ShownPointer(place.pointer, type);
  const bool isKnown = std::any_of(findings.begin(), findings.end(), [&](const ErrorInfo& finding) {
    return finding.field == field;
  });
  if (!isKnown) {
    findings.push_back({std::move(field), fault});
  }
}

void RefusePlaces(std::vector<ErrorInfo> findings) {
  for (const ErrorInfo& finding : findings) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_VALIDATION_FINDING, finding.field.c_str(),
                         finding.error.c_str());
  }
  ThrowException<ValidationException>(CS_UPDATE_INVALID, findings);
}

}  // namespace TarnConfigStore
