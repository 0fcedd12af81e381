#include "writes/if_revision.h"

#include "tarnconfigstore/compare_and_set.h"

#include "failure.h"
#include "given/object_name.h"

#include <limits>
#include <utility>

namespace tarnctl {
namespace {

constexpr const char* kIfRevision = "--if-revision";

}  // namespace

Argument IfRevisionArgument(std::vector<std::string> excludes) {
  return {.name = kIfRevision,
          .help = "Write only where the object has this revision; 0: where it is not stored",
          .valueName = "N",
          .range = NumberRange{0, std::numeric_limits<std::int32_t>::max()},
          .excludes = std::move(excludes)};
}

void AtRevision(TarnConfigStore::ConfigStore& store, const TarnConfigStore::ConfigStoreObjectId& id,
                const Given& given, const std::function<void()>& write) {
  const auto wanted = given.Number(kIfRevision);
  if (!wanted) {
    write();
    return;
  }
  const auto state = TarnConfigStore::GetState(store, id);
  const std::int64_t revision = state.GetRevision();
  const bool isStored = revision != TarnConfigStore::kDefaultRevision;
  if (isStored ? revision != static_cast<std::int64_t>(*wanted) || *wanted == 0 : *wanted != 0) {
    throw ToolError(ExitCode::CONFLICT,
                    "nothing was written: " + FormatObject(id) +
                        (isStored ? " has revision " + std::to_string(revision) + ", not " +
                                        std::to_string(*wanted)
                                  : " is not stored"));
  }
  if (!TarnConfigStore::WriteIfUnchanged(store, {state}, write).empty()) {
    throw ToolError(ExitCode::CONFLICT,
                    "nothing was written: " + FormatObject(id) + " was changed meanwhile");
  }
}

}  // namespace tarnctl
