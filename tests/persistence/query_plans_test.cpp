#include "persistence/boot_statements.h"
#include "persistence/statements.h"
#include "support/database.h"

#include <gtest/gtest.h>

namespace TarnConfigStore {
namespace {

class QueryPlans : public ::testing::Test {
 protected:
  std::string Plan(std::string sql) {
    for (std::size_t at; (at = sql.find("%1$s")) != std::string::npos;) {
      sql.replace(at, 4, "UserValue");
    }
    return database_.Lines("EXPLAIN QUERY PLAN " + sql);
  }
  template <class... Statements>
  void Expect(const std::string& step, const Statements&... statements) {
    for (const std::string_view statement : {TextOf(statements)...}) {
      const std::string plan = Plan(std::string(statement));
      EXPECT_NE(plan.find(step), std::string::npos) << statement << "\n" << plan;
      EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << statement << "\n" << plan;
    }
  }
  static std::string_view TextOf(std::string_view statement) { return statement; }
  template <class... Parameters>
  static std::string_view TextOf(const DBStore::SqlStatement<Parameters...>& statement) {
    return statement.Text();
  }

  TestSupport::TemporaryHost host_;
  TestSupport::Database database_{host_};
};

TEST_F(QueryPlans, EveryStatementWalksTheKeysIndexUnlessItAsksForEverything) {
  const std::string component = " USING PRIMARY KEY (Component=?";
  const std::string group = component + " AND ConfigGroup=?";
  const std::string type = group + " AND Name=?";
  const std::string instance = type + " AND Identifier=?)";
  Expect("SEARCH Config" + instance, READ_TABLE_CONFIG, READ_TABLE_USER_AUTO_CONFIG, READ_REVISION,
         WRITE_COMPLETE, WRITE_USER, WRITE_CACHED, WRITE_VITAL, WRITE_AUTOMATIC,
         WRITE_CONTEXT_UPGRADE, WRITE_CONTEXT_USER, WRITE_CONTEXT_AUTOMATIC, UPDATE_CONTEXT_UPGRADE,
         UPDATE_CONTEXT_USER, UPDATE_CONTEXT_AUTOMATIC, DELETE_ROW, LIST_STORED[4],
         WRITE_KERNEL_OPTIONS, READ_DESIRED_ALL_PARTS, READ_DESIRED_USER, CONFIRM_INSTANCE,
         DROP_PENDING_OF_INSTANCE, CONFIRM_PART, REDIVIDE_ROW);
  Expect("SEARCH Config" + type + ")", GET_INSTANCES, READ_INSTANCE_IDS, READ_INSTANCE_REVISIONS,
         READ_EXISTING_INSTANCES, DELETE_INSTANCES, DELETE_VITAL_VALUES, DELETE_CACHED_VALUES,
         DELETE_USER_VALUES, DELETE_AUTOMATIC_VALUES, COUNT_STORED_INSTANCES, LIST_STORED[3],
         READ_DESIRED_INSTANCES_ALL_PARTS, READ_DESIRED_INSTANCES_USER, CONFIRM_TYPE,
         DROP_PENDING_OF_TYPE, READ_KERNEL_OPTIONS);
  Expect("SEARCH Config" + group + ")", READ_GROUP, LIST_STORED[2]);
  Expect("SEARCH Config" + component + ")", READ_COMPONENT, LIST_STORED[1]);
  Expect("SCAN Config", READ_CONTENTS, READ_CONFIRMED_CONTENTS, LIST_STORED[0]);
  Expect("SEARCH DefaultConfig" + instance, GET_DEFAULT_INSTANCE, GET_DEFAULT_USER_INSTANCE);
  Expect("SEARCH DefaultConfig" + type + ")", GET_DEFAULT_INSTANCES, GET_DEFAULT_USER_INSTANCES,
         READ_DEFAULT_INSTANCES, DELETE_DEFAULT_INSTANCES);
  Expect("SEARCH DesiredUserConfig" + instance, UNSTAGE_INSTANCE, READ_STAGED_INSTANCE,
         LIST_STAGED[4]);
  Expect("SEARCH DesiredUserConfig" + type + ")", UNSTAGE_TYPE, READ_STAGED_INSTANCES,
         READ_STAGED_OF_TYPE, LIST_STAGED[3]);
  Expect("SEARCH DesiredUserConfig" + group + ")", LIST_STAGED[2]);
  Expect("SEARCH DesiredUserConfig" + component + ")", LIST_STAGED[1]);
  Expect("SCAN DesiredUserConfig", READ_STAGED, LIST_STAGED[0]);
  // Its two halves are put together in a tree of a row or two.
  const std::string remediated = Plan(std::string(READ_REMEDIATED_KERNEL_OPTIONS));
  for (const std::string table : {"duc1", "c1", "c2", "duc2"}) {
    EXPECT_NE(remediated.find("SEARCH " + table + type + ")"), std::string::npos) << remediated;
  }
  for (const std::string_view write : {STAGE_SET, STAGE_DELETE, UNSTAGE_ALL}) {
    EXPECT_EQ(Plan(std::string(write)), "") << "reads nothing";
  }
}

}  // namespace
}  // namespace TarnConfigStore
