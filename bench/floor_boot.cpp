#include "floor_store.h"
#include "floor_transaction.h"
#include "validation/rule_sets.h"

#include <stdexcept>

namespace Benchmarks {

using TarnConfigStore::ConfigStoreObjectId;

void FloorStore::RefuseRemediation() {
  if (Holds("BOOT_MODE", "1")) {
    throw std::runtime_error("floor: the host is being remediated");
  }
}

void FloorStore::Stage(const ConfigStoreObjectId& id, Json::Value& data, const FloorType& type) {
  Check(id, data, type, TarnConfigStore::SetRules());
  Transaction transaction(*this);
  RefuseRemediation();
  BindRow(stage_, id, type.Version());
  stage_.Bind(6, text_.Make(data));
  stage_.Bind(9, "SET");
  stage_.Execute();
  setKeyValue_.Bind(1, "BOOT_MODE");
  setKeyValue_.Bind(2, "4");
  setKeyValue_.Execute();
  transaction.Commit();
}

std::string FloorStore::ApplyStaged(const ConfigStoreObjectId& id, const FloorType& type) {
  enum Column { COMPONENT, GROUP, NAME, IDENTIFIER, VERSION, USER, VITAL, CACHED, ACTION };
  std::string applied;
  ConfigStoreObjectId instance = id;
  Transaction transaction(*this);
  RefuseRemediation();
  BindRow(apply_, id, type.Version());
  while (getStaged_.Step()) {
    if (getStaged_.Text(COMPONENT) != id.component || getStaged_.Text(GROUP) != id.group ||
        getStaged_.Text(NAME) != id.key || getStaged_.Text(ACTION) != "SET" ||
        !getStaged_.IsNull(VITAL) || !getStaged_.IsNull(CACHED)) {
      getStaged_.Reset();
      throw std::runtime_error("floor: only content of one type, and the user's");
    }
    instance.instanceId = getStaged_.Text(IDENTIFIER);
    const std::string_view text = getStaged_.Text(USER);
    Json::Value& data = scratch_.Parse(text);
    Check(instance, data, type, TarnConfigStore::SetRules());
    apply_.Bind(1, instance.instanceId);
    // It was cleaned when it was staged, so it goes as it stands.
    apply_.Bind(6, text);
    apply_.Execute();
    applied.append(instance.instanceId).push_back('\0');
  }
  getStaged_.Reset();
  unstageAll_.Execute();
  transaction.Commit();
  return applied;
}

}  // namespace Benchmarks
