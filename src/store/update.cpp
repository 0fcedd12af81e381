#include "store/update.h"

#include "objects/access.h"
#include "objects/division.h"
#include "objects/merge.h"
#include "persistence/boot_flags.h"
#include "persistence/statements.h"
#include "persistence/write_by_context.h"
#include "validation/object_validation.h"

#include <optional>
#include <string>

namespace TarnConfigStore {
namespace {

UPDATE_CONTEXT UpdateContextOf(const USERDATA_CONTEXT& context) {
  if (context != EXTERNAL) {
    return UPDATE_AUTOMATIC;
  }
  return ReadUpgradeContext() == 0 ? UPDATE_USER : UPDATE_DURING_UPGRADE;
}

unsigned PartsOf(const ColumnValues& values) {
  const auto part = [](bool given, Json::Kind kind) {
    return given ? static_cast<unsigned>(kind) : 0U;
  };
  return part(values.user || values.automatic, Json::Kind::USER) |
         part(values.vital.has_value(), Json::Kind::VITAL) |
         part(values.cached.has_value(), Json::Kind::CACHED);
}

// One value of a row, with a change laid over it.
class Layer {
 public:
  Layer(const RowMap& row, std::string_view column, const std::optional<std::string>& change,
        const ConfigStoreObjectId& id, const SchemaHandle& schema)
      : object_(MakeObjectFromRow(row, column, id, schema)) {
    if (!change) {
      if (const auto text = row.Find(column)) {
        text_ = *text;
      }
    } else if (!object_) {
      object_ = MakeObject(*change, id, schema);
      text_ = *change;
    } else {
      object_ =
          UpdateConfigInternal(MakeObject(*change, id, schema), object_, schema->GetSchemaPlace());
      text_ = Internal::Access::Of(*object_).GetSerializedData();
    }
  }

  const ObjectHandle& Object() const { return object_; }
  std::optional<std::string>& Text() { return text_; }

 private:
  ObjectHandle object_;
  std::optional<std::string> text_;
};

}  // namespace

void UpdateInternal(const ObjectHandle& object, const SchemaHandle& schema,
                    const USERDATA_CONTEXT& context, const DBStore::ConnectionHandle& connection) {
  const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
  GiveGeneratedIds(*object, *schema);
  const ColumnValues changes = DivideObject(*object, *schema, context).values;
  const RowMap row = ReadRowMap(connection, READ_TABLE_CONFIG, id);
  Layer automatic(row, "AutoConfValue", changes.automatic, id, schema);
  Layer cached(row, "CachedValue", changes.cached, id, schema);
  Layer vital(row, "VitalValue", changes.vital, id, schema);
  // A user's change is laid over what a reader of this moment sees as the user's.
  const UPDATE_CONTEXT updateContext = UpdateContextOf(context);
  const bool pending = updateContext == UPDATE_DURING_UPGRADE && row.Find("DesiredValue");
  Layer user(row, pending ? "DesiredValue" : "UserValue", changes.user, id, schema);

  const ObjectHandle result = MergeConfig(automatic.Object(), cached.Object(), vital.Object(),
                                          user.Object(), schema->GetSchemaPlace());
  ValidateUpdated(schema, result, PartsOf(changes));
  WriteLayersByContext(id, {user.Text(), automatic.Text(), vital.Text(), cached.Text()},
                       schema->GetVersion(), updateContext, connection);
}

}  // namespace TarnConfigStore
