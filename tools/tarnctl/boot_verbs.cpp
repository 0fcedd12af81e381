#include "boot_verbs.h"

#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/type_administration.h"

#include "descriptions.h"
#include "findings.h"
#include "object_name.h"
#include "store_access.h"
#include "type_flags.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

namespace tarnctl {
namespace {

using TarnConfigStore::ApplyResult;
using TarnConfigStore::ConfigStoreException;
using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::StoredObject;
using TarnConfigStore::UnappliedChange;
using TarnConfigStore::ValidationException;

// The entry that tells the host what its next boot is about.
constexpr const char* kBootMode = "BOOT_MODE";
constexpr const char* kNothingStaged = "0";
constexpr const char* kRemediation = "1";

Json EntryOrNull(const char* key) {
  const std::string value = TarnConfigStore::GetKeyValue(key);
  return value.empty() ? Json() : Json(value);
}

Json BootInfoOrNull(const Output& output) {
  if (TarnConfigStore::GetKeyValue("BOOT_INFO").empty()) {  // a host that never said
    return {};
  }
  try {
    return TarnConfigStore::GetBootInfo();
  } catch (const ConfigStoreException& error) {
    Report({ExitCode::DONE, error.GetErrorCode(), error.what(), {}}, output.AsJson());
    return {};
  }
}

/// Why nothing can be staged now; null when something can.
Json StagingObstacle() {
  if (TarnConfigStore::GetKeyValue(kBootMode) == kRemediation) {
    return "the host is being remediated";
  }
  try {
    OpenStore()->GetNextBootStore();
    return {};
  } catch (const ValidationException& error) {
    return error.what();
  }
}

bool IsWaiting(const StoredObject& object) {
  return object.hasPending || !object.confirmed;
}

Json DescribeWaiting() {
  Json list = Json::array();
  for (const auto& object : TarnConfigStore::ListStored(ParsePrefixIfGiven(""))) {
    if (IsWaiting(object)) {
      list.push_back({{"object", FormatObject(object.id)},
                      {"pending", object.hasPending},
                      {"confirmed", object.confirmed}});
    }
  }
  return list;
}

Json ListRebootTypes() {
  Json list = Json::array();
  for (const auto& type : TarnConfigStore::ListTypes()) {
    const auto flags = SplitFlags(type.flags);
    if (std::find(flags.begin(), flags.end(), "rebootRequired") != flags.end()) {
      list.push_back(FormatObject({type.key, type.group, type.component}));
    }
  }
  return list;
}

Json Describe(const ApplyResult& result) {
  Json applied = Json::array();
  for (const auto& change : result.applied) {
    applied.push_back({{"object", FormatObject(change.id)}, {"action", NameAction(change.action)}});
  }
  Json staged = Json::array();
  for (const auto& change : result.staged) {
    staged.push_back({{"object", FormatObject(change.id)},
                      {"action", NameAction(change.action)},
                      {"findings", ListFindings(change.findings)}});
  }
  return {{"applied", std::move(applied)}, {"staged", std::move(staged)}};
}

std::string DescribeRefusal(const ApplyResult& result, bool applyRest) {
  const auto unfit =
      std::count_if(result.staged.begin(), result.staged.end(),
                    [](const UnappliedChange& change) { return !change.findings.empty(); });
  std::string text = std::to_string(unfit) + " of " +
                     std::to_string(result.applied.size() + result.staged.size()) +
                     " staged changes cannot be applied";
  return text + (applyRest ? "" : "; nothing was applied: --rest applies the others");
}

std::vector<StoredObject> ListConcerned(const ConfigStoreObjectId& prefix, BootVerdict verdict) {
  auto objects = TarnConfigStore::ListStored(prefix);
  const auto others =
      std::remove_if(objects.begin(), objects.end(), [verdict](const StoredObject& object) {
        return verdict == BootVerdict::ACCEPT ? !IsWaiting(object) : !object.hasPending;
      });
  objects.erase(others, objects.end());
  return objects;
}

void SetStatus(const ConfigStoreObjectId& id, BootVerdict verdict) {
  TarnConfigStore::SetBootStatus(id, verdict == BootVerdict::ACCEPT);
}

void SayHowMany(std::size_t count, BootVerdict verdict) {
  const char* noun = verdict == BootVerdict::ACCEPT ? "object" : "pending value";
  const char* outcome = verdict == BootVerdict::ACCEPT ? "accepted" : "dropped";
  std::fprintf(stderr, "tarnctl: %zu %s%s %s\n", count, noun, count == 1 ? "" : "s", outcome);
}

}  // namespace

void ShowBootStatus(const Output& output) {
  const bool booting = TarnConfigStore::IsBoot();
  Json bootInfo = BootInfoOrNull(output);
  Json obstacle = StagingObstacle();
  output.Print({{"booting", booting},
                {"bootInfo", std::move(bootInfo)},
                {"bootMode", EntryOrNull(kBootMode)},
                {"upgradeContext", TarnConfigStore::GetUpgradeContext()},
                {"canStage", obstacle.is_null()},
                {"obstacle", std::move(obstacle)},
                {"staged", DescribeStaged(ParsePrefixIfGiven(""))},
                {"waiting", DescribeWaiting()},
                {"rebootTypes", ListRebootTypes()}});
}

void ShowBootInfo(const Output& output) {
  output.PrintMember(TarnConfigStore::GetBootInfo());
}

void ApplyStaged(bool applyRest, const Output& output) {
  const ApplyResult result = TarnConfigStore::ApplyNextBootConfig({applyRest});
  if (result.staged.empty()) {
    TarnConfigStore::SetKeyValue(kBootMode, kNothingStaged);
  }
  output.PrintLenient(Describe(result));
  if (!result.staged.empty()) {
    throw ToolError({ExitCode::INVALID,
                     TarnConfigStore::CS_GENERIC,
                     DescribeRefusal(result, applyRest),
                     {},
                     output.AsJson()});
  }
}

void JudgeBoot(const std::string& object, BootVerdict verdict) {
  const ConfigStoreObjectId id = ParseObject(object);
  if (TarnConfigStore::ListStored(id).empty()) {
    RaiseNotStored(id);
  }
  const std::size_t count = ListConcerned(id, verdict).size();
  SetStatus(id, verdict);
  SayHowMany(count, verdict);
}

void JudgeWholeBoot(BootVerdict verdict) {
  const auto concerned = ListConcerned(ParsePrefixIfGiven(""), verdict);
  ConfigStoreObjectId judged("", "", "");
  for (const StoredObject& object : concerned) {  // sorted: the instances of a type in a row
    const ConfigStoreObjectId type(object.id.key, object.id.group, object.id.component);
    if (type != judged) {
      SetStatus(type, verdict);
      judged = type;
    }
  }
  SayHowMany(concerned.size(), verdict);
}

}  // namespace tarnctl
