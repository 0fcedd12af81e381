#include "persistence/kernel_option_rows.h"

#include "errors/raise.h"
#include "objects/division.h"
#include "objects/merge.h"
#include "persistence/binder.h"
#include "persistence/boot_flags.h"
#include "persistence/boot_statements.h"
#include "persistence/statements.h"

namespace TarnConfigStore {
void SetKernelOptionsInternal(const ObjectHandle& object, const SchemaHandle& schema,
                              const DBStore::ConnectionHandle& connection) {
  GiveGeneratedIds(*object, *schema);
  const auto& [id, values] = DivideObject(*object, *schema, EXTERNAL);
  const DBStore::StatementHandle statement =
      DBStore::internal::Prepare(connection, WRITE_KERNEL_OPTIONS, DBStore::kWaitLimit);
  if (!Binder(connection, statement)
           .Text(id->instanceId, id->key, id->group, id->component, schema->GetVersion())
           .Nullable(values.user, values.vital)
           .Execute()) {
    ThrowFailure("Database call to update Kernel options configuration failed for: " +
                 id->toString());
  }
}

ObjectHandle GetKernelOptionsInternal(const ConfigStoreObjectId& id,
                                      const DBStore::ConnectionHandle& connection,
                                      const SchemaHandle& schema) {
  const DBStore::StatementHandle statement = DBStore::internal::Prepare(
      connection,
      IsRemediatedInternal(connection) ? READ_REMEDIATED_KERNEL_OPTIONS : READ_KERNEL_OPTIONS,
      DBStore::kWaitLimit);
  RowMap row;
  RunReading(connection, statement, CollectRowMap, &row,
             [&id] { return "Get failed: " + id.toString(); });
  return UpdateConfigInternal(MakeObjectFromRow(row, "Value", id, schema),
                              MakeObjectFromRow(row, "VitalValue", id, schema),
                              schema->GetSchemaPlace());
}

}  // namespace TarnConfigStore
