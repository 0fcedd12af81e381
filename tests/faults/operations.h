// What callers of the library do, for the sweep.
#pragma once

#include "tarnconfigstore/tarnconfigstore.h"

#include <memory>
#include <string>
#include <vector>

namespace Faults {

/// Makes the host that all operations find: types, and rows, staged changes and entries of every kind.
void PrepareHost(const std::string& root);

/// The handles of one caller, made when they are first asked for.
class Caller {
 public:
  std::shared_ptr<TarnConfigStore::ConfigStore>& Store();
  TarnConfigStore::NextBootStore& NextBoot();

 private:
  std::shared_ptr<TarnConfigStore::ConfigStore> store_;
  std::shared_ptr<TarnConfigStore::NextBootStore> nextBoot_;
};

struct Operation {
  const char* name;
  /// Answers what came of it, or raises something.
  std::string (*run)(Caller& caller);
  /// What it has done by the time it fails may stay, and the next call completes it.
  bool completesLater = false;
  /// It goes to a host root of its own: for processes that have no handle.
  bool leaves = false;
  bool startsAThread = false;
};

struct OperationGroup {
  const char* name;
  std::vector<Operation> operations;
};

/// Every operation of the public interface that reads or writes a host.
const std::vector<OperationGroup>& Groups();

}  // namespace Faults
