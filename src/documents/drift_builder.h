// What is told of objects that differ.
#pragma once

#include "tarnconfigstore/drift.h"

#include "documents/document_plan.h"
#include "json/type_schema_view.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// What is told to have been found where a part has nothing.
enum class FoundElsewhere {
  TOLD,  ///< what is read there, of another part
  LEFT,  ///< nothing: each part is told of by itself
};

/// Makes drift objects of what a plan would change.
class DriftBuilder {
 public:
  /// \param userOnly  pending values and generated ids do not count
  /// \param reveal    secrets are shown as they are
  DriftBuilder(bool userOnly, bool reveal, FoundElsewhere elsewhere = FoundElsewhere::TOLD)
      : userOnly_(userOnly), reveal_(reveal), elsewhere_(elsewhere) {}

  DriftObject Of(const DocumentPlan::PlannedStep& step);
  DriftObject Of(const DocumentPlan::PlannedRecord& record);

 private:
  void Compare(const char* name, const std::optional<std::string>& after,
               const std::optional<std::string>& before, const StoredRow& row);
  bool IsIdOfObject(const std::string& pointer) const;
  void FindElsewhere(const StoredRow& row, DriftMember& member, Json::SchemaPlace place) const;
  std::optional<std::string> Shown(const Json::Value* value, Json::SchemaPlace place) const;

  const bool userOnly_;
  const bool reveal_;
  const FoundElsewhere elsewhere_;
  Json::SchemaPlace place_;
  std::vector<DriftMember> members_;
};

}  // namespace TarnConfigStore
