// Which layer of an object a verb writes.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/dry_run.h"

#include "command_line.h"

#include <memory>
#include <vector>

namespace tarnctl {

/// The options that name one; without any, whole objects are meant.
Choice LayerChoice();

TarnConfigStore::WriteKind KindOf(const Given& given);

/// Writes the layer that was named.
void SetLayers(TarnConfigStore::ConfigStore& store,
               const std::shared_ptr<TarnConfigStore::ConfigStoreObject>& object,
               const Given& given);
/// The same of all instances of a type.
void SetLayersOfInstances(
    TarnConfigStore::ConfigStore& store,
    const std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>>& objects,
    const Given& given);

}  // namespace tarnctl
