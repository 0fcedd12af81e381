// A host for targets that need one.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "support/database.h"
#include "support/temporary_host.h"

#include <string_view>
#include <vector>

namespace Fuzz {

/// A host in a directory of its own, with the sample types and those of the tests: made at the first
/// use, and gone with the process.
class TestHost {
 public:
  static TestHost& Get();

  const TestSupport::TemporaryHost& Host() const { return host_; }

  /// A connection past the library.
  TestSupport::Database& Store() { return store_; }

  /// Takes every object, staged change and entry out of the store.
  void Clear();

  /// The type of this key, or, for any other text, one of the types all the same. Of a type with
  /// instances the id names one, "s".
  const TarnConfigStore::ConfigStoreObjectId& Type(std::string_view key) const;

 private:
  TestHost();

  TestSupport::TemporaryHost host_;
  TestSupport::Database store_{host_};
  std::vector<TarnConfigStore::ConfigStoreObjectId> types_;
};

}  // namespace Fuzz
