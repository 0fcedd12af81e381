#include "tarnconfigstore/listing.h"

#include "platform/type_files.h"

#include "admin/stored_rows.h"
#include "errors/platform_failures.h"

#include <map>
#include <string>
#include <utility>

namespace TarnConfigStore {

std::vector<OutdatedObject> ListOutdated(const ConfigStoreObjectId& prefix) {
  std::map<TarnSchemaStore::TypeName, std::string> versions;
  for (TypeFiles::KeptType& type : WithStoreFailures([] { return TypeFiles::ReadAll(); })) {
    versions.emplace(std::move(type.name), std::move(type.version));
  }
  std::vector<OutdatedObject> outdated;
  VisitStored(prefix, [&](StoredObject object) {
    const auto type = versions.find({object.id.component, object.id.group, object.id.key});
    if (type != versions.end() && IsOutdated(object.version, type->second)) {
      outdated.push_back({std::move(object), type->second});
    }
  });
  return outdated;
}

}  // namespace TarnConfigStore
