// The types shared with SmartNICs, as statements see them.
#include "db/database.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;

TEST(SchemaAttachment, ShowsSharedTypesForAsLongAsSomebodyAskedForThem) {
  constexpr const char* kShared =
      "SELECT Component, ConfigGroup, Name, ValueType FROM ss.SmartnicSchema";
  const TemporaryHost host;
  InstallType(host, kPlainType);
  InstallType(host, R"({"component":"tarn","group":"test","key":"card","version":"1",
      "schema":{"type":"object","shared":true}})");
  const DBStore::ConnectionHandle connection = Connect();
  EXPECT_EQ(Query(connection, kShared), "failed");
  EXPECT_EQ(DBStore::DetachSchemaStore(connection), 21);
  ASSERT_EQ(DBStore::AttachSchemaStore(connection), 0);
  ASSERT_EQ(DBStore::AttachSchemaStore(connection), 0);
  ASSERT_EQ(DBStore::DetachSchemaStore(connection), 0);
  EXPECT_EQ(Query(connection, kShared), "tarn test card tarn-shared");
  ASSERT_EQ(DBStore::BeginTransaction(connection), 0);
  EXPECT_EQ(Query(connection, kShared), "tarn test card tarn-shared");
  EXPECT_EQ(DBStore::DetachSchemaStore(connection), 0);
  EXPECT_EQ(DBStore::CommitTransaction(connection), 0);
  EXPECT_EQ(Query(connection, kShared), "failed");
}

}  // namespace
