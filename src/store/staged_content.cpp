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

}  // namespace TarnConfigStore
