// What a type does not allow in its stored and staged objects.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "persistence/row_objects.h"
#include "persistence/type_rows.h"

#include <vector>

namespace TarnConfigStore {

/// Judges what a row is read as, now or once what waits in it is confirmed or dropped, and adds what
/// does not fit. A current value that only becomes whole by what waits is not asked for required
/// members. Answers false, with no more than that added, when a text of the row is not JSON.
bool JudgeRow(const StoredRow& row, const ConfigStoreObjectId& id, const SchemaHandle& type,
              std::vector<Misfit>& misfits);

/// The same for a change that is staged of a type, which has to let changes wait for the next boot
/// still: they could not be taken back otherwise. Deletions ask nothing else of it.
void JudgeStaged(const RowMap& change, const SchemaHandle& type, std::vector<Misfit>& misfits);

}  // namespace TarnConfigStore
