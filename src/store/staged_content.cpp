#include "store/staged_content.h"

#include "validation/object_validation.h"

namespace TarnConfigStore {

ObjectHandle JudgeStagedContent(const RowMap& row, const ConfigStoreObjectId& id,
                                const SchemaHandle& type, std::vector<ErrorInfo>& findings) {
  if (!ValidateIdentity(type, id, findings)) {
    return nullptr;
  }
  try {
    ObjectHandle object = MergeParts(row, "UserValue", id, type);
    if (object) {
      ValidateObjectData(type, object, SetRules(), findings, true);
    } else {
      findings.push_back({"/", "The change has no content."});
    }
    return object;
  } catch (const InvalidArgumentException& notJson) {
    findings.push_back({"/", notJson.what()});
    return nullptr;
  }
}

void JudgeContent(const ObjectHandle& content, const SchemaHandle& type,
                  std::vector<ErrorInfo>& findings) {
  try {
    ValidateSet(type, content);
  } catch (const ValidationException& refused) {
    findings.insert(findings.end(), refused.GetErrors().begin(), refused.GetErrors().end());
    return;
  }
  if (content->IsEmpty()) {
    findings.push_back({"/", "Nothing is left of the object."});
  }
}

std::string_view NewestUserColumn(const RowMap& row) {
  return row.Find("DesiredValue") ? "DesiredValue" : "UserValue";
}

ObjectHandle NewestContent(const RowMap& row, const ConfigStoreObjectId& id,
                           const SchemaHandle& type) {
  return MergeParts(row, NewestUserColumn(row), id, type);
}

}  // namespace TarnConfigStore
