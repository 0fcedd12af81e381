#include "write_object.h"

#include "given_object.h"
#include "store_access.h"

#include <cstdint>

namespace tarnctl {

void WriteObject(const TarnConfigStore::ConfigStoreObjectId& id,
                 const std::vector<std::string>& data, const Write& write) {
  const TypeSchema schema(id);
  const auto given = MakeObject(id, data, schema);
  const auto store = OpenStore();
  const std::int32_t revision = store->GetRevision(id);
  write(*store, given);
  // The library writes nothing, and says nothing, when cleaning leaves nothing to write.
  if (store->GetRevision(id) == revision) {
    throw ToolError(ExitCode::INVALID,
                    "nothing was written: without its empty members the object holds no data");
  }
}

}  // namespace tarnctl
