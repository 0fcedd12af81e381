#include "admin/misfits.h"

#include "admin/type_reports.h"
#include "persistence/read_current.h"
#include "persistence/type_rows.h"
#include "validation/object_validation.h"

namespace TarnConfigStore {
namespace {

std::string NameOf(const ConfigStoreObjectId& id) {
  std::string name = id.component + "/" + id.group + "/" + id.key;
  return id.instanceId.empty() ? name : name + "/" + id.instanceId;
}

}  // namespace

void JudgeStoredObjects(const TypeFiles::TypeFile& file,
                        const DBStore::ConnectionHandle& connection, bool force,
                        TypeReport& report) {
  const ConfigStoreObjectId id = IdOf(file.type.name);
  if (CountStoredInstances(id, connection) == 0) {
    return;
  }
  const SchemaHandle type = TypeFiles::Load(file.type);
  const auto everything = std::make_shared<FilterSpecObject>(id);
  for (const ObjectHandle& object : GetConfigInstancesInternal(everything, connection, type)) {
    std::vector<ErrorInfo> errors;
    ValidateCSO(type, object, errors);
    for (ErrorInfo& error : errors) {
      report.misfits.push_back(
          {NameOf(object->GetConfigStoreObjectId()) + "#" + error.field, std::move(error.error)});
    }
  }
  if (!report.misfits.empty() && !force) {
    report.outcome = TypeOutcome::INVALID;
  }
}

}  // namespace TarnConfigStore
