#include "tarnconfigstore/stored_views.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "store/trace.h"
#include "validation/guards.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace TarnConfigStore {
namespace {

bool IsBefore(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) {
  return std::tie(a.group, a.key, a.instanceId) < std::tie(b.group, b.key, b.instanceId);
}

}  // namespace

GroupConfig GetConfigOfGroup(const std::string& component, const std::string& group) {
  LogStoreCall(CSLogger::kTrace, "GetConfigOfGroup", {"", group, component}, EXTERNAL);
  if (component.empty()) {
    ThrowArgument("A component has to be named.");
  }
  LeftOut leftOut;
  GroupConfig config;
  config.objects = GetBulkConfigInternal(component, group, &leftOut);
  config.notInstalled = std::move(leftOut.notInstalled);
  config.unconfirmed = std::move(leftOut.unconfirmed);
  // The statement asks for no order.
  std::sort(config.objects.begin(), config.objects.end(), [](const auto& a, const auto& b) {
    return IsBefore(a->GetConfigStoreObjectId(), b->GetConfigStoreObjectId());
  });
  std::sort(config.notInstalled.begin(), config.notInstalled.end(), IsBefore);
  std::sort(config.unconfirmed.begin(), config.unconfirmed.end(), IsBefore);
  return config;
}

std::shared_ptr<ConfigStoreObject> GetConfigDuringBoot(const ConfigStoreObjectId& csoId,
                                                       const USERDATA_CONTEXT& context) {
  LogStoreCall(CSLogger::kTrace, "GetConfigDuringBoot", csoId, context);
  const SchemaHandle schema = FindSchema(csoId);
  ValidateCsoId(csoId, schema);
  return GetConfigByBootAndContext(csoId, schema, context,
                                   GetDBStore(DBStore::Type::CURRENT_STORE, true));
}

}  // namespace TarnConfigStore
