// The installed types, as far as they can be used.
#pragma once

#include "tarnconfigstore/doctor.h"

#include "platform/type_files.h"

#include "objects/handles.h"

#include <map>
#include <vector>

namespace TarnConfigStore {

struct KnownType {
  TypeFiles::KeptType kept;
  SchemaHandle schema;  ///< empty for one that is damaged
};

class KnownTypes {
 public:
  explicit KnownTypes(std::vector<TypeFiles::KeptType> kept);

  /// Empty for a type that is not installed or is damaged.
  SchemaHandle Find(const ConfigStoreObjectId& id) const;
  /// Sorted by name.
  const std::map<TarnSchemaStore::TypeName, KnownType>& All() const { return types_; }
  bool HasGroup(const std::string& component, const std::string& group) const;

  void TellDamaged(std::vector<DoctorFinding>& findings) const;

 private:
  std::map<TarnSchemaStore::TypeName, KnownType> types_;
};

}  // namespace TarnConfigStore
