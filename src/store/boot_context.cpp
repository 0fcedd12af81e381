#include "store/boot_context.h"

#include "persistence/boot_flags.h"
#include "validation/guards.h"

namespace TarnConfigStore {

bool IsClosedDuringBoot(const SchemaHandle& schema, const DBStore::ConnectionHandle& connection) {
  return IsBootInternal(connection) && !schema->IsBootAccessible();
}

void CheckBootTimeContext(const SchemaHandle& schema, const ObjectHandle& object,
                          const USERDATA_CONTEXT& context,
                          const DBStore::ConnectionHandle& connection) {
  if (IsClosedDuringBoot(schema, connection) && isUserType(object, schema)) {
    checkUserContext(true, context);
  }
}

}  // namespace TarnConfigStore
