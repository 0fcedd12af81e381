#include "store/boot_context.h"

#include "errors/raise.h"
#include "persistence/boot_flags.h"
#include "validation/guards.h"

namespace TarnConfigStore {

bool IsClosedDuringBoot(const SchemaHandle& schema, const DBStore::ConnectionHandle& connection) {
  return IsBootInternal(connection) && !schema->IsBootAccessible();
}

void RequireNextBootStore(const DBStore::ConnectionHandle& connection) {
  if (ReadUpgradeContext() != 0 || IsBootInternal(connection)) {
    ThrowRefusal("NextBootStore is not supported during the upgrade or boot phase");
  }
}

void CheckBootTimeContext(const SchemaHandle& schema, const ObjectHandle& object,
                          const USERDATA_CONTEXT& context,
                          const DBStore::ConnectionHandle& connection) {
  if (IsClosedDuringBoot(schema, connection) && isUserType(object, schema)) {
    checkUserContext(true, context);
  }
}

}  // namespace TarnConfigStore
