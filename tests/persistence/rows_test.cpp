#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"

#include "objects/filter.h"
#include "objects/schema_lookup.h"
#include "persistence/boot_flags.h"
#include "persistence/boot_statements.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "persistence/statements.h"
#include "support/store_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <regex>

namespace TarnConfigStore {
namespace {

using TestSupport::OnLayout1;
using TestSupport::Raised;

class Rows : public TestSupport::StoreFixture {
 protected:
  DBStore::ConnectionHandle connection_ = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  SchemaHandle plainSchema_ = FindSchema(plain_);
  SchemaHandle switchSchema_ = FindSchema(switch_);
};

TEST_F(Rows, ReadersChooseTheUsersColumn) {
  const auto read = [&](USERDATA_CONTEXT context) {
    return Data(GetConfigByBootAndContext(plain_, plainSchema_, context, connection_));
  };
  const auto current = [&] {
    return Data(GetCurrentConfigInternal(plain_, connection_, plainSchema_));
  };
  PutRow(plain_, R"({"u":1})", R"({"d":1})", R"({"a":1})", R"({"v":1})", R"({"c":1})", 1);
  EXPECT_EQ(read(AUTO_CONFIG), R"({"a":1})");
  EXPECT_EQ(read(EXTERNAL), R"({"a":1,"c":1,"v":1,"u":1})");
  EXPECT_EQ(current(), R"({"a":1,"u":1})");
  SetUpgradeContext("1");
  EXPECT_EQ(read(EXTERNAL), R"({"a":1,"c":1,"v":1,"d":1})");
  EXPECT_EQ(current(), R"({"a":1,"u":1})") << "pending values are not current yet";
  SetUpgradeContext("0");
  PutRow(plain_, "[1]", "[2]", "", "", "", 0);
  EXPECT_EQ(current() + read(EXTERNAL), "nonenone") << "the user's value is not confirmed";
}

TEST_F(Rows, CarryTheirMetadataIntoTheObject) {
  PutRow(plain_, R"({"name":"x"})", "", "", "", "", 1);
  database_.Run("UPDATE Config SET Version = '0.9', ModifiedTime = '2021-02-03 04:05:06'");
  const ObjectHandle object = store_->Get(plain_);
  EXPECT_EQ(
      object->GetVersion() + "|" + object->GetCreationTime() + "|" + object->GetModifiedTime(),
      "0.9|2020-01-01 00:00:00|2021-02-03 04:05:06");
  EXPECT_EQ(object->GetRevision(), 7);
  database_.Run("UPDATE Config SET Revision = 'many'");
  EXPECT_EQ(store_->Get(plain_)->GetRevision(), 0);
  database_.Run("UPDATE Config SET UserValue = '{'");
  EXPECT_EQ(Raised([&] { store_->Get(plain_); }), "IAE 1080 The text is not valid JSON.");
  EXPECT_EQ(log_.Count("0 UserValue of comp tarn grp test key plain cannot be read as "
                       "JSON: line 1, column 2: Missing a name for object member."),
            1);
  const auto last = [] {
    const ParseFailure failure = GetLastParseFailure();
    return std::to_string(failure.line) + ":" + std::to_string(failure.column) + " " +
           failure.source + ": " + failure.reason;
  };
  EXPECT_EQ(last(),
            "1:2 UserValue of comp tarn grp test key plain: Missing a name for object member.");
  store_->GetInstances(Filter(Switch("")));
  EXPECT_NE(last(), "0:0 : ") << "success leaves it";
  const std::string name(118, 'n');
  const std::string text = "{\n\"" + name + "\u00e4\":1,\"" + name + "\u00e4\":2}";
  EXPECT_EQ(Raised([&] { Object(plain_, text); }), "IAE 1080 The text is not valid JSON.");
  EXPECT_EQ(last(), "2:248 The text: member \"" + name);
  ClearLastParseFailure();
  EXPECT_EQ(last(), "0:0 : ");
}

TEST_F(Rows, InstancesAreReadEachFromItsOwnRow) {
  PutRow(Switch("a"), R"({"mtu":1})", "", R"({"x":1})", "", "", 1);
  PutRow(Switch("b"), R"({"mtu":2})", R"({"mtu":3})", "", R"({"serial":"x"})", "", 1);
  const auto read = [&](const Id& id) {
    return Data(store_->GetInstances(Filter(id, R"({"mtu":2})"))) + "| " +
           Data(GetCurrentConfigInstancesInternal(id, connection_, switchSchema_));
  };
  EXPECT_EQ(read(Switch("")), R"(b{"serial":"x","mtu":2} | a{"x":1,"mtu":1} b{"mtu":2} )");
  EXPECT_EQ(read(Switch("b")), R"(b{"serial":"x","mtu":2} | b{"mtu":2} )");
}

// Texts are told apart before objects are made of them: no answer may come of that.
TEST_F(Rows, AFilterKeepsWhatItKeepsOfAllObjects) {
  int row = 0;
  const auto id = [&row] { return Switch("s" + std::to_string(row++)); };
  for (const char* text :
       {"{}", R"({"m":1})", R"({"m":1.0,"n":null})", R"({"m":10e-1})", R"({"m":"1"})",
        R"({"\u006d":1})", R"({"m":1,"m":2})", R"({"m":2,"m":1})", R"({"o":{"m":1}})",
        R"({"o":{"x":{},"y":[1]},"m":1})", R"({"l":[{"m":1},2],"t":"\u0061"})", R"({"t":"a"})",
        R"({"t":"a\u0000"})", R"({"m":18446744073709551615})", R"({"b":true,"m":1})", "[1]", "1"}) {
    PutRow(id(), text, "", "", "", "", 1);
    PutRow(id(), text, "", R"({"m":1,"t":"b"})", "", "", 1);
    PutRow(id(), "", text, "", R"({"m":1})", "", 0);
    PutRow(id(), "{", "", "", text, "", 0);
  }
  SetLogLevel(2);
  const auto all = store_->GetInstances(Filter(Switch("")));
  for (const char* filter :
       {"{}", R"({"m":1})", R"({"m":1,"t":"b"})", R"({"t":"a"})", R"({"n":null})", R"({"o":{}})",
        R"({"o":{"m":1.0}})", R"({"l":[2]})", R"({"b":true})", R"({"m":1.8446744073709552e19})",
        R"({"m":"1"})", R"({"m":{}})"}) {
    const auto wanted = Filter(Switch(""), filter);
    EXPECT_EQ(Data(store_->GetInstances(wanted)), Data(FilterConfigStoreObjects(all, wanted)))
        << filter;
  }
  for (const char* broken :
       {"", "{", R"({"t":"x"}})", R"({"x":1e400})", R"({"x":4e308})", R"({"x":"\ud800"})"}) {
    PutRow(Switch("zzz"), broken[0] == '\0' ? " " : broken, "", "", "", "", 1);
    for (const auto& operation : std::vector<std::function<void()>>{
             [&] { store_->GetInstances(Filter(Switch(""), R"({"t":"x"})")); },
             [&] { store_->DeleteInstances(Filter(Switch(""), R"({"t":"a"})")); }}) {
      EXPECT_EQ(Raised(operation), "IAE 1080 The text is not valid JSON.") << broken;
    }
  }
  EXPECT_EQ(store_->GetInstanceIds(Switch("")).size(), all.size() + 1) << "nothing was deleted";
}

TEST_F(Rows, OfAComponentOrOfTheWholeStore) {
  PutRow(plain_, "{}", "[2]", "", "", "", 0);
  PutRow(Switch("a"), R"({"mtu":1})", "", "", "", "", 1);
  PutRow({"gone", "other", "tarn"}, "{}", "", "", "", "", 1);
  EXPECT_EQ(Data(GetBulkConfigInternal("tarn", "test")), R"(a{"mtu":1} )");
  EXPECT_EQ(Data(GetBulkConfigInternal("tarn", "")), R"(a{"mtu":1} )");
  EXPECT_EQ(log_.Count("1 Skipped, its type is not installed: comp tarn grp other key gone"), 1);
  EXPECT_EQ(GetUserConfigContents(connection_).size(), 2U) << "of confirmed rows";
  const RowMapList all = GetStoreContentsInternalST("DesiredValue", connection_, true);
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0]->Find("Value"), "[2]");
  ConfigTypeMap types;
  UpdateConfigTypeMap(types, SwitchObject("s1"));
  EXPECT_TRUE(types.at("switch").at("s1"));
}

TEST_F(Rows, ListingSkipsRowsWithoutValues) {
  PutRow(plain_, "", "", "", "", "", 1);
  EXPECT_TRUE(ListStored(Id("", "", "")).empty());
  PutRow(plain_, "", "{}", "", "{}", "", 0);
  for (const Id& prefix : {Id("", "", ""), Id("", "", "tarn"), Id("", "test", "tarn"), plain_}) {
    const std::vector<StoredObject> stored = ListStored(prefix);
    ASSERT_EQ(stored.size(), 1U) << prefix.toString();
    const StoredObject& one = stored[0];
    EXPECT_TRUE(one.id == plain_ && one.revision == 7 && !one.confirmed && one.hasPending &&
                one.hasVital && !one.hasUser && !one.hasAutomatic && !one.hasCached);
  }
  EXPECT_TRUE(ListStored(Id("", "tes", "tarn")).empty());
  PutRow(switch_, "{}", "", "", "", "", 1);
  std::string visited;
  const auto visit = [&](const StoredObject& object) {
    visited += object.id.key + " ";
    if (object.id == switch_) {
      throw std::runtime_error("enough");
    }
  };
  EXPECT_EQ(Raised([&] { VisitStored(Id("", "", ""), visit); }) + visited,
            "std enoughplain switch ");
}

TEST_F(Rows, FailuresOfTheDatabaseNameWhatFailed) {
  Fail(Operation::EXECUTE);
  ExpectRaised({{"CSE 2000 Get failed: comp tarn grp test key plain", [&] { store_->Get(plain_); }},
                {"CSE 2000 Read Instances failed for: comp tarn grp test key switch",
                 [&] { store_->GetInstances(Filter(Switch(""))); }},
                {"CSE 2000 GetInstanceIds failed", [&] { store_->GetInstanceIds(switch_); }},
                {"CSE 2000 GetRevision", [&] { store_->GetInstancesRevision(switch_); }},
                {"CSE 2000 Get store rows failed.", [&] { GetUserConfigContents(connection_); }},
                {"CSE 2000 Get all keys failed", [] { GetBulkConfigInternal("tarn", ""); }}});
  Fail(Operation::EXECUTE, 5);
  EXPECT_EQ(Raised([&] { store_->Get(plain_); }), "nothing")
      << "readers take every status but 1 for an answer";
  Fail(Operation::READ_KEY_VALUE, 5);
  ExpectRaised({{"CSE 2000 Failed to read value from database.", [] { IsBoot(); }},
                {"CSE 2000 Failed to read KV table for key: K", [] { GetKeyValue("K"); }}});
  Fail(Operation::WRITE_KEY_VALUE, 5);
  ExpectRaised({{"CSE 2000 Failed to write KV table for key: K", [] { SetKeyValue("K", "v"); }}});
  Fail(Operation::GET_CONNECTION, 14);
  ExpectRaised(
      {{"CSE 1002 Cannot connect to the store database "
        "/etc/kestrel/configstore/current-store-1.",
        [] { GetKeyValue("K"); }},
       {"CSE 2000 Failed to connect", [] { GetDBStore(DBStore::Type::CURRENT_STORE, true); }},
       {"CSE 2000 Failed to read value from database.", [] { IsBoot(); }}});
  EXPECT_EQ(GetDBStore(DBStore::Type::CURRENT_STORE, false), nullptr);
}

std::string_view TextOf(std::string_view statement) {
  return statement;
}
template <class... Parameters>
std::string_view TextOf(const DBStore::SqlStatement<Parameters...>& statement) {
  return statement.Text();
}

// The key is a table's own tree in layout 1, and an index beside it since.
TEST_F(Rows, AreFoundByTheKeyUnlessAllAreAskedFor) {
  const auto plan = [this](std::string sql) {
    for (std::size_t at; (at = sql.find("%1$s")) != std::string::npos;) {
      sql.replace(at, 4, "UserValue");
    }
    static const std::regex key("PRIMARY KEY|(COVERING )?INDEX sqlite_autoindex_[A-Za-z]+_1");
    return std::regex_replace(database_.Lines("EXPLAIN QUERY PLAN " + sql), key, "KEY");
  };
  const auto expect = [&plan](const std::string& step, const auto&... statements) {
    for (const std::string_view statement : {TextOf(statements)...}) {
      const std::string steps = plan(std::string(statement));
      EXPECT_NE((steps + "\n").find(step), std::string::npos) << statement << "\n" << steps;
      EXPECT_EQ(steps.find("TEMP B-TREE"), std::string::npos) << statement << "\n" << steps;
      EXPECT_EQ(std::count(steps.begin(), steps.end(), '\n'), 0) << statement << "\n" << steps;
    }
  };
  const auto expectByPrefix = [&expect](const std::string& table, const std::string& all,
                                        const auto& statements) {
    std::string step = "SEARCH " + table + " USING KEY (Component=?";
    expect("SCAN " + table + all, statements[0]);
    expect(step + ")", statements[1]);
    expect((step += " AND ConfigGroup=?") + ")", statements[2]);
    expect((step += " AND Name=?") + ")", statements[3]);
    expect(step + " AND Identifier=?)", statements[4]);
  };
  const std::string group = " USING KEY (Component=? AND ConfigGroup=?";
  const std::string type = group + " AND Name=?";
  const std::string instance = type + " AND Identifier=?)";
  expect("SEARCH Config" + instance, READ_TABLE_CONFIG, READ_TABLE_USER_AUTO_CONFIG, READ_REVISION,
         UPDATE_CONTEXT_UPGRADE, UPDATE_CONTEXT_USER, UPDATE_CONTEXT_AUTOMATIC, DELETE_ROW,
         READ_DESIRED_ALL_PARTS, READ_DESIRED_USER, CONFIRM_INSTANCE, DROP_PENDING_OF_INSTANCE,
         CONFIRM_PART, REDIVIDE_ROW);
  expect("SEARCH Config" + type + ")", GET_INSTANCES, READ_INSTANCE_IDS, READ_INSTANCE_REVISIONS,
         READ_EXISTING_INSTANCES, DELETE_INSTANCES, DELETE_VITAL_VALUES, DELETE_CACHED_VALUES,
         DELETE_USER_VALUES, DELETE_AUTOMATIC_VALUES, COUNT_STORED_INSTANCES,
         READ_DESIRED_INSTANCES_ALL_PARTS, READ_DESIRED_INSTANCES_USER, CONFIRM_TYPE,
         DROP_PENDING_OF_TYPE, READ_KERNEL_OPTIONS);
  expect("SEARCH Config" + group + ")", READ_GROUP);
  expect("SEARCH Config USING KEY (Component=?)", READ_COMPONENT);
  expect("SCAN Config\n", READ_CONTENTS, READ_CONFIRMED_CONTENTS);
  expect("SCAN DefaultConfig", READ_TYPES_WITH_DEFAULTS);
  const std::string inOrder = OnLayout1() ? "\n" : " USING KEY\n";
  expect("SCAN Config" + inOrder, READ_STORED_TYPES);
  for (const auto& statements : {LIST_STORED, READ_USER_VALUES, READ_AUTOMATIC_VALUES,
                                 READ_VITAL_VALUES, READ_CACHED_VALUES, READ_PENDING_VALUES}) {
    expectByPrefix("Config", inOrder, statements);
  }
  for (const auto& statements : {LIST_STAGED, READ_STAGED_RECORDS}) {
    expectByPrefix("DesiredUserConfig", inOrder, statements);
  }
  expect("SEARCH DefaultConfig" + instance, GET_DEFAULT_INSTANCE, GET_DEFAULT_USER_INSTANCE);
  expect("SEARCH DefaultConfig" + type + ")", GET_DEFAULT_INSTANCES, GET_DEFAULT_USER_INSTANCES,
         READ_DEFAULT_INSTANCES, DELETE_DEFAULT_INSTANCES);
  expect("SEARCH DesiredUserConfig" + instance, UNSTAGE_INSTANCE, READ_STAGED_INSTANCE);
  expect("SEARCH DesiredUserConfig" + type + ")", UNSTAGE_TYPE, READ_STAGED_INSTANCES,
         READ_STAGED_OF_TYPE, READ_STAGED_IDS, READ_STAGED_OF_OBJECT);
  expect("SCAN DesiredUserConfig" + inOrder, READ_STAGED);
  // Its two halves are put together in a tree of a row or two.
  const std::string remediated = plan(std::string(READ_REMEDIATED_KERNEL_OPTIONS));
  for (const std::string table : {"duc1", "c1", "c2", "duc2"}) {
    EXPECT_NE(remediated.find("SEARCH " + table + type + ")"), std::string::npos) << remediated;
  }
  EXPECT_NE(plan(std::string(READ_SOMETHING)).find("SCAN Config"), std::string::npos);
  ASSERT_EQ(DBStore::AttachSchemaStore(connection_), 0);
  for (const std::string_view shared : {CONFIRM_SHARED, DROP_PENDING_OF_SHARED}) {
    const auto statement = DBStore::internal::Prepare(
        connection_, "EXPLAIN QUERY PLAN " + std::string(shared), DBStore::kWaitLimit);
    std::string steps;
    ForEachRow(connection_, statement, "",
               [&steps](const RowMap& row) { steps.append(row.Text("detail")).append("\n"); });
    EXPECT_THAT(steps, testing::ContainsRegex("SEARCH Config USING [^\n]*\\(Component=\\? AND "
                                              "ConfigGroup=\\? AND Name=\\?\\)"));
  }
  for (const std::string_view write :
       {WRITE_COMPLETE, WRITE_USER, WRITE_CACHED, WRITE_VITAL, WRITE_AUTOMATIC,
        WRITE_CONTEXT_UPGRADE, WRITE_CONTEXT_USER, WRITE_CONTEXT_AUTOMATIC, WRITE_KERNEL_OPTIONS,
        STAGE_SET, STAGE_DELETE, WRITE_DEFAULT_INSTANCE}) {
    EXPECT_EQ(plan(std::string(write)), "") << "looks for nothing but its own key";
  }
  // Of layout 1, where nothing is kept beside a record, all of it goes at once.
  EXPECT_EQ(plan(std::string(UNSTAGE_ALL)).find("SCAN") == std::string::npos, OnLayout1());
}

}  // namespace
}  // namespace TarnConfigStore
