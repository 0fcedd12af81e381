#include "persistence/statements.h"
#include "support/database.h"

#include <gtest/gtest.h>

namespace TarnConfigStore {
namespace {

// The plan of a statement, a line a step.
std::string Plan(TestSupport::Database& database, std::string sql) {
  for (std::size_t at; (at = sql.find("%1$s")) != std::string::npos;) {
    sql.replace(at, 4, "UserValue");
  }
  std::string plan;
  for (const std::string& step : database.Run("EXPLAIN QUERY PLAN " + sql)) {
    plan += step + "\n";
  }
  return plan;
}

TEST(QueryPlans, EveryStatementWalksTheKeysIndexUnlessItAsksForEverything) {
  const TestSupport::TemporaryHost host;
  TestSupport::Database database(host);
  const std::string component = "PRIMARY KEY (Component=?";
  const std::string group = component + " AND ConfigGroup=?";
  const std::string type = group + " AND Name=?";
  const std::string instance = type + " AND Identifier=?";
  const std::pair<std::string, std::vector<std::string_view>> cases[] = {
      {"SEARCH Config USING " + instance + ")",
       {READ_TABLE_CONFIG.Text(),
        READ_TABLE_USER_AUTO_CONFIG.Text(),
        READ_REVISION.Text(),
        WRITE_COMPLETE,
        WRITE_USER,
        WRITE_CACHED,
        WRITE_VITAL,
        WRITE_AUTOMATIC,
        WRITE_CONTEXT_UPGRADE,
        WRITE_CONTEXT_USER,
        WRITE_CONTEXT_AUTOMATIC,
        UPDATE_CONTEXT_UPGRADE,
        UPDATE_CONTEXT_USER,
        UPDATE_CONTEXT_AUTOMATIC,
        DELETE_ROW.Text(),
        LIST_STORED[4],
        WRITE_KERNEL_OPTIONS,
        READ_DESIRED_ALL_PARTS.Text(),
        READ_DESIRED_USER.Text(),
        CONFIRM_INSTANCE.Text(),
        DROP_PENDING_OF_INSTANCE.Text(),
        CONFIRM_PART,
        REDIVIDE_ROW}},
      {"SEARCH Config USING " + type + ")",
       {GET_INSTANCES.Text(), READ_INSTANCE_IDS.Text(), READ_INSTANCE_REVISIONS.Text(),
        READ_EXISTING_INSTANCES.Text(), DELETE_INSTANCES.Text(), DELETE_VITAL_VALUES.Text(),
        DELETE_CACHED_VALUES.Text(), DELETE_USER_VALUES.Text(), DELETE_AUTOMATIC_VALUES.Text(),
        COUNT_STORED_INSTANCES, LIST_STORED[3], READ_DESIRED_INSTANCES_ALL_PARTS.Text(),
        READ_DESIRED_INSTANCES_USER.Text(), CONFIRM_TYPE.Text(), DROP_PENDING_OF_TYPE.Text(),
        READ_KERNEL_OPTIONS}},
      {"SEARCH DefaultConfig USING " + instance + ")",
       {GET_DEFAULT_INSTANCE.Text(), GET_DEFAULT_USER_INSTANCE.Text()}},
      {"SEARCH DefaultConfig USING " + type + ")",
       {GET_DEFAULT_INSTANCES.Text(), GET_DEFAULT_USER_INSTANCES.Text(), READ_DEFAULT_INSTANCES,
        DELETE_DEFAULT_INSTANCES}},
      {"SEARCH DesiredUserConfig USING " + instance + ")",
       {UNSTAGE_INSTANCE.Text(), READ_STAGED_INSTANCE.Text(), LIST_STAGED[4]}},
      {"SEARCH DesiredUserConfig USING " + type + ")",
       {UNSTAGE_TYPE.Text(), READ_STAGED_INSTANCES.Text(), READ_STAGED_OF_TYPE, LIST_STAGED[3]}},
      {"SEARCH DesiredUserConfig USING " + group + ")", {LIST_STAGED[2]}},
      {"SEARCH DesiredUserConfig USING " + component + ")", {LIST_STAGED[1]}},
      {"SCAN DesiredUserConfig", {READ_STAGED, LIST_STAGED[0]}},
      {"SEARCH Config USING " + group + ")", {READ_GROUP, LIST_STORED[2]}},
      {"SEARCH Config USING " + component + ")", {READ_COMPONENT, LIST_STORED[1]}},
      {"SCAN Config", {READ_CONTENTS, READ_CONFIRMED_CONTENTS, LIST_STORED[0]}},
  };
  for (const auto& [expected, statements] : cases) {
    for (const std::string_view statement : statements) {
      const std::string plan = Plan(database, std::string(statement));
      EXPECT_NE(plan.find(expected), std::string::npos) << statement << "\n" << plan;
      EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << statement << "\n" << plan;
    }
  }
  // Its two halves are put together in a tree of a row or two.
  const std::string remediated = Plan(database, std::string(READ_REMEDIATED_KERNEL_OPTIONS));
  for (const char* table : {"duc1", "c1", "c2", "duc2"}) {
    EXPECT_NE(remediated.find("SEARCH " + std::string(table) + " USING " + type + ")"),
              std::string::npos)
        << remediated;
  }
  for (const std::string_view write : {STAGE_SET, STAGE_DELETE, UNSTAGE_ALL}) {
    EXPECT_EQ(Plan(database, std::string(write)), "") << "reads nothing";
  }
}

}  // namespace
}  // namespace TarnConfigStore
