// Making an object's data ready for its row: ids for elements that want one, and dividing it among
// the value columns.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"

#include "platform/schema_store.h"

#include "json/json.h"
#include "json/type_schema_view.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// Gives an id to each element of the object's data that its type wants one for and that has none.
void GiveGeneratedIds(const ConfigStoreObject& object, const TarnSchemaStore::SchemaObject& schema);

/// The texts for the value columns of one row; an absent text is NULL in the table.
struct ColumnValues {
  std::optional<std::string> user;
  std::optional<std::string> automatic;
  std::optional<std::string> vital;
  std::optional<std::string> cached;
};

/// One row to be written. The identifier is the object's own, which has to live as long.
struct ColumnMapEntry {
  const ConfigStoreObjectId* id;
  ColumnValues values;
};
using ColumnMap = std::vector<ColumnMapEntry>;

/// Divides a value of a type by the "vital" and "cached" tags of its schema, at any depth
/// (Json::SchemaPlace tells what belongs where). What is not tagged is the user's. An object's
/// instance id goes into every part that gets anything else of it; an array of instances with
/// members of several parts goes into each part that gets any, with all its elements in order. What
/// is empty, or holds nothing but ids, goes to the part of the place where it stands.
/// Merging the parts gives back the value, up to the order of members and null-valued ones.
class DividedValue {
 public:
  /// \param value  has to outlive this, as it is: a type that belongs to one part as a whole is not
  ///               taken apart
  DividedValue(const Json::Value& value, Json::SchemaPlace type);
  DividedValue(const DividedValue&) = delete;
  DividedValue& operator=(const DividedValue&) = delete;

  /// Null where the part gets nothing.
  const Json::Value* Of(Json::Kind part) const;
  /// The parts that get anything, as bits of Json::Kind.
  unsigned Parts() const;

 private:
  Json::Allocator memory_;                           // takes none until something is taken apart
  std::array<std::optional<Json::Value>, 3> taken_;  // from what is taken apart
  std::array<const Json::Value*, 3> parts_{};
};

/// The texts of such parts. What is the user's goes to the automatic value in an automatic context.
/// Raises ConfigStoreException 2000 when the value holds what JSON cannot say.
ColumnValues DivideValue(const Json::Value& value, const TarnSchemaStore::SchemaObject& schema,
                         const USERDATA_CONTEXT& context);

/// The same for a value whose text is at hand; nothing where the type's data are to be taken apart,
/// or elements of them to get ids.
std::optional<ColumnValues> PlaceText(std::string text, const TarnSchemaStore::SchemaObject& schema,
                                      const USERDATA_CONTEXT& context);

/// The same for an object's data.
ColumnMapEntry DivideObject(const ConfigStoreObject& object,
                            const TarnSchemaStore::SchemaObject& schema,
                            const USERDATA_CONTEXT& context);

}  // namespace TarnConfigStore
