#include "doctor/known_types.h"

#include "platform/host_paths.h"

#include "admin/type_reports.h"
#include "doctor/findings.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace TarnConfigStore {

KnownTypes::KnownTypes(std::vector<TypeFiles::KeptType> kept) {
  for (TypeFiles::KeptType& type : kept) {
    KnownType known{std::move(type), nullptr};
    try {
      known.schema = TypeFiles::Load(known.kept);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {
      // It counts as damaged.
    }
    const TarnSchemaStore::TypeName name = known.kept.name;
    types_.emplace(name, std::move(known));
  }
}

SchemaHandle KnownTypes::Find(const ConfigStoreObjectId& id) const {
  const auto found = types_.find({id.component, id.group, id.key});
  return found == types_.end() ? nullptr : found->second.schema;
}

bool KnownTypes::HasGroup(const std::string& component, const std::string& group) const {
  return std::any_of(types_.begin(), types_.end(), [&](const auto& type) {
    return type.first.component == component && type.first.group == group;
  });
}

void KnownTypes::TellDamaged(std::vector<DoctorFinding>& findings) const {
  for (const auto& [name, type] : types_) {
    if (!type.schema) {
      DoctorFinding finding = RowFinding(
          DoctorSeverity::FAULT, "type-damaged", "Types", IdOf(name),
          "the installed type cannot be read: nobody can use its objects",
          "install it again (`tarnctl schema install PATH`, or `tarnctl doctor --repair --types "
          "PATH`)",
          false);
      finding.file = HostPaths::kSchemaStore;
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace TarnConfigStore
