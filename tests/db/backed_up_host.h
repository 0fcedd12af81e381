// A host whose two stores say which state they are in, and backups of it.
#pragma once

#include "platform/host_backup.h"
#include "platform/schema_store.h"
#include "platform/type_files.h"

#include "db/database.h"
#include "db/steps.h"
#include "schema/keep_type.h"
#include "support/raised.h"

#include <csignal>
#include <string>

namespace TestSupport {

/// Brings both stores into a state as installing a type does: the types' right to write first, then
/// rows and types, committed in this order. False when somebody else keeps them locked.
inline bool SetState(int state) {
  try {
    const std::string version = std::to_string(state) + ".0";
    TypeFiles::TypeWriter types;
    const auto store = Connect();
    if (DBStore::BeginTransaction(store) != 0 ||
        Execute(store,
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 40) "
                "INSERT OR "
                "REPLACE INTO Config(Component, ConfigGroup, Name, Identifier, Version, UserValue) "
                "SELECT 'tarn', 'test', 't', i, ?1, hex(zeroblob(700)) FROM n",
                std::string_view(version)) != 0 ||
        DBStore::CommitTransaction(store) != 0) {
      return false;
    }
    const std::string comment(state == 1 ? 200'000 : 1, 'x');  // the first state is the larger one
    types.Put({{"tarn", "test", "t"},
               version,
               TypeText("t", R"({"type":"object","$comment":")" + comment + "\"}", version)});
    types.Commit();
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

/// The state of the rows, and that of the types: "1.0 40 | 1.0".
inline std::string Look() {
  try {
    const auto type = TypeFiles::Read({"tarn", "test", "t"});
    return Query(Connect(), "SELECT Version, COUNT(*) FROM Config GROUP BY Version") + " | " +
           (type ? type->version : "-");
  } catch (const std::runtime_error& failure) {
    return failure.what();
  }
}
inline const std::string kFirst = "1.0 40 | 1.0";
inline const std::string kSecond = "2.0 40 | 2.0";

/// In the second state, with a backup of the first.
class BackedUpHost : public testing::Test {
 protected:
  BackedUpHost() {
    EXPECT_TRUE(SetState(1));
    HostBackup::Backup(backup_, false);
    EXPECT_TRUE(SetState(2));
  }
  ~BackedUpHost() override { DBStore::testing::SetHook(nullptr); }

  /// What is raised, which has to be the last store error, too.
  template <class Call>
  static std::string Failure(const Call& call) {
    DBStore::ClearLastError();
    try {
      call();
    } catch (const std::runtime_error& failure) {
      EXPECT_EQ(DBStore::GetLastError().message, failure.what());
      return failure.what();
    }
    return "nothing";
  }
  std::string Restoring(const std::string& path, bool force = true) {
    return Failure([&] { HostBackup::Restore(path, force); });
  }

  static std::size_t CountFiles(const std::string& directory) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(directory), {}));
  }

  TemporaryHost host_;
  const std::string store_ = host_.Path(HostPaths::kStore);
  const std::string schemaStore_ = host_.Path(HostPaths::kSchemaStore);
  const std::string pending_ = host_.Path(HostPaths::kPendingRestore);
  const std::string backup_ = host_.Root() + "/backup";
};

}  // namespace TestSupport
