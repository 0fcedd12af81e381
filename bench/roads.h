// The two roads that are compared, each with what it keeps open.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/held_rows.h"

#include "floor_store.h"

#include <memory>
#include <string>

namespace Benchmarks {

struct Roads {
  explicit Roads(const std::string& root)
      : library(TarnConfigStore::ConfigStore::GetStore(TarnConfigStore::sGlobalNamespace)),
        floor(root) {
    // What is measured is the road to the database, but for the rows that say otherwise.
    TarnConfigStore::SetRowHolding(false);
  }

  std::shared_ptr<TarnConfigStore::ConfigStore> library;
  FloorStore floor;
};

/// Raises std::runtime_error unless both roads read the same objects from the store.
void CheckSameAnswers(Roads& roads);

}  // namespace Benchmarks
