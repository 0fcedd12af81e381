// Staged changes that give an object content, seen through the type of today.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "persistence/row_objects.h"

#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// The content of a staged change, its parts merged, and everything that keeps it from becoming
/// current, judged as one object that is to be set. Empty where there is no object to be had, which
/// is a finding.
/// \param row   has the parts as "UserValue", "VitalValue" and "CachedValue"
/// \param type  empty when it is not installed
ObjectHandle JudgeStagedContent(const RowMap& row, const ConfigStoreObjectId& id,
                                const SchemaHandle& type, std::vector<ErrorInfo>& findings);

/// The same judgement of content that is at hand; the object is made ready to be stored where it fits.
void JudgeContent(const ObjectHandle& content, const SchemaHandle& type,
                  std::vector<ErrorInfo>& findings);

/// The column of a row of Config that holds the newest that a user gave it: the pending value where
/// there is one.
std::string_view NewestUserColumn(const RowMap& row);

/// The content of a row of Config that applying a staged change replaces, its newest values merged;
/// nobody need have confirmed them. Empty where there is none. Raises InvalidArgumentException 1080 for a text that is not JSON.
ObjectHandle NewestContent(const RowMap& row, const ConfigStoreObjectId& id,
                           const SchemaHandle& type);

}  // namespace TarnConfigStore
