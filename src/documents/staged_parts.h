// The parts of a change that is staged.
#pragma once

#include "documents/sections.h"
#include "objects/division.h"

#include <array>
#include <optional>
#include <string>

namespace TarnConfigStore {

struct StagedPart {
  const char* name;    ///< in a document
  const char* column;  ///< of the rows that readers of staged changes give
  std::optional<std::string> ColumnValues::*text;
};

inline constexpr std::array<StagedPart, 3> kStagedParts = {
    {{kUserName, "UserValue", &ColumnValues::user},
     {kVitalName, "VitalValue", &ColumnValues::vital},
     {kCachedName, "CachedValue", &ColumnValues::cached}}};

}  // namespace TarnConfigStore
