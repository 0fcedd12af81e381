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
  struct Case {
    std::string_view sql;
    const char* plan;
  };
  const Case cases[] = {
      {GET_INSTANCES.Text(),
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=?)"},
      {READ_TABLE_CONFIG.Text(),
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=? AND "
       "Identifier=?)"},
      {READ_TABLE_USER_AUTO_CONFIG.Text(),
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=? AND "
       "Identifier=?)"},
      {READ_REVISION.Text(),
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=? AND "
       "Identifier=?)"},
      {GET_DEFAULT_INSTANCE.Text(),
       "SEARCH DefaultConfig USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=? AND "
       "Identifier=?)"},
      {READ_COMPONENT, "SEARCH Config USING PRIMARY KEY (Component=?)"},
      {READ_GROUP, "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=?)"},
      {WRITE_COMPLETE,
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=? AND "
       "Identifier=?)"},
      {LIST_STORED[1], "SEARCH Config USING PRIMARY KEY (Component=?)"},
      {LIST_STORED[2], "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=?)"},
      {LIST_STORED[3],
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=?)"},
      {LIST_STORED[4],
       "SEARCH Config USING PRIMARY KEY (Component=? AND ConfigGroup=? AND Name=? AND "
       "Identifier=?)"},
      {READ_CONTENTS, "SCAN Config"},
      {READ_CONFIRMED_CONTENTS, "SCAN Config"},
      {LIST_STORED[0], "SCAN Config"},
  };
  for (const Case& each : cases) {
    const std::string plan = Plan(database, std::string(each.sql));
    EXPECT_NE(plan.find(each.plan), std::string::npos) << each.sql << "\n" << plan;
    EXPECT_EQ(plan.find("TEMP B-TREE"), std::string::npos) << each.sql << "\n" << plan;
  }
}

}  // namespace
}  // namespace TarnConfigStore
