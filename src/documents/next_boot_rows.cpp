#include "documents/next_boot_rows.h"

#include "documents/staged_parts.h"
#include "persistence/next_boot_records.h"

namespace TarnConfigStore {

StoredRow AfterBoot(const StoredRow& row) {
  StoredRow after = row;
  after.user = row.pending ? row.pending : row.user;
  after.pending.reset();
  after.confirmed = true;
  return after;
}

void ApplyStaged(const RowMap& change, std::optional<StoredRow>& row) {
  if (ActionFromRow(change) != NextBootAction::SET) {
    row.reset();
    return;
  }
  StoredRow& coming = row ? *row : row.emplace();
  for (const StagedPart& part : kStagedParts) {
    const auto text = change.Find(part.column);
    coming.*part.text = text ? std::optional<std::string>(*text) : std::nullopt;
  }
  coming.instanceId = change.Text("Identifier");
}

}  // namespace TarnConfigStore
