#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/listing.h"

#include "admin/type_folder.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "support/random_objects.h"
#include "support/store_fixture.h"

#include <gmock/gmock.h>

namespace TarnConfigStore {
namespace {

using namespace ::testing;
using namespace TestSupport;

constexpr const char* kVital = R"(,"vital":true)";
constexpr const char* kCached = R"(,"cached":true)";
constexpr const char* kOutcomes[] = {"renewed", "divided", "partly", "left", "unfit"};

class StoredObjects : public StoreFixture {
 protected:
  // A type with instances: "a" is the user's, "m", "c" and "v" have the tags that are given.
  static std::string Type(const char* version, const std::string& m, const std::string& c = "",
                          const std::string& v = "", const std::string& root = "") {
    return TypeFile("t", version,
                    R"({"type":"object")" + root + R"(,"properties":{
        "name":{"type":"string","instanceId":true},"a":{"type":"integer","maximum":9},"o":{},
        "m":{"type":"integer")" +
                        m + R"(},"c":{"type":"integer")" + c + R"(},"v":{"type":"integer")" + v +
                        "}}}");
  }
  TypeReport Install(const std::string& type, const InstallOptions& options = {}) {
    folder_.Write("t.json", type);
    return TarnConfigStore::InstallTypes({folder_.Path()}, options).at(0);
  }
  static ConfigStoreObjectId Id(const std::string& instance) {
    return {"t", "test", "tarn", instance};
  }
  // Each "{" of a value gets the instance's name.
  void Put(const std::string& instance, std::string values) {
    for (std::size_t at = 0; (at = values.find("'{", at)) != std::string::npos; ++at) {
      values.insert(at + 2, R"("name":")" + instance + "\",");
    }
    database_.Run(
        "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, CreationTime, "
        "Revision) VALUES ('tarn','test','t','" +
        instance + "','1','2020-01-01',7); UPDATE Config SET " + values + " WHERE Identifier = '" +
        instance + "'");
  }
  // The rows with their versions.
  std::string Rows() {
    return database_.Lines(R"(SELECT Identifier || ' ' || Version || replace(
        ifnull(' u=' || UserValue, '') || ifnull(' d=' || DesiredValue, '') ||
        ifnull(' a=' || AutoConfValue, '') || ifnull(' v=' || VitalValue, '') ||
        ifnull(' c=' || CachedValue, ''), '"name":', '') FROM Config WHERE Name = 't')");
  }
  static std::vector<std::string> Lines(const std::vector<RowReport>& reports) {
    std::vector<std::string> lines;
    for (const RowReport& report : reports) {
      lines.push_back(report.object.instanceId + " " + report.version + " " +
                      kOutcomes[static_cast<int>(report.outcome)]);
      for (const Misfit& misfit : report.misfits) {
        lines.back() += " " + misfit.pointer;
      }
    }
    return lines;
  }
  static std::vector<std::string> Misfits(const TypeReport& report) {
    std::vector<std::string> lines;
    for (const Misfit& misfit : report.misfits) {
      lines.push_back(misfit.object.instanceId + " " +
                      std::to_string(static_cast<int>(misfit.place)) + " " + misfit.pointer +
                      " | " + misfit.field + ": " + misfit.error);
    }
    return lines;
  }

  TypeFolder folder_{host_};
};

TEST_F(StoredObjects, RowsAreDividedAgainAsFarAsAllReadersAgree) {
  Install(Type("1", "", kCached, kVital));
  Put("automatic", R"(AutoConfValue = '{"m":1}')");
  Put("both", R"(AutoConfValue = '{"m":1}', UserValue = '{"m":2,"a":2}')");
  Put("kinds",
      R"(AutoConfValue = '{"o":{"x":1}}', CachedValue = '{"o":5}', UserValue = '{"o":{"y":2},"m":1}')");
  Put("moved", R"(UserValue = '{"a":1}', CachedValue = '{"c":2}', VitalValue = '{"v":3}')");
  Put("pend-all", R"(UserValue = '{"m":1,"a":1}', DesiredValue = '{"m":1}')");
  Put("pend-less", R"(UserValue = '{"m":1,"a":1}', DesiredValue = '{"a":2}')");
  Put("pend-more", R"(UserValue = '{"m":1,"a":1}', DesiredValue = '{"m":2}')");
  Put("pend-same",
      R"(UserValue = '{"m":1,"a":1}', DesiredValue = '{"m":1,"a":2}', CachedValue = '{"c":3}')");
  Put("right", R"(UserValue = '{"a":1}', DesiredValue = '{"a":2}', AutoConfValue = '{"a":3}')");
  Put("twice", R"(UserValue = '{"m":1,"a":1}', VitalValue = '{"m":2}', CachedValue = '{"m":3}')");
  Put("unconf", R"(UserValue = '{"m":1}', Success = 0)");
  Put("unconf-same", R"(UserValue = '{"m":1}', VitalValue = '{"m":1}', Success = 0)");
  const std::string before = Rows();
  const auto divided =
      ElementsAre("both 1 divided", "kinds 1 left", "moved 1 divided", "pend-all 1 divided",
                  "pend-less 1 left", "pend-more 1 partly", "pend-same 1 divided",
                  "twice 1 divided", "unconf 1 left", "unconf-same 1 divided");
  EXPECT_THAT(Lines(Install(Type("2", kVital, "", kCached), {.checkOnly = true}).divided), divided);
  EXPECT_EQ(Rows(), before);
  EXPECT_THAT(Lines(Install(Type("2", kVital, "", kCached)).divided), divided);
  EXPECT_EQ(Rows(), R"(automatic 1 a={"automatic","m":1}
both 2 u={"both","a":2} a={"both","m":1} v={"both","m":2}
kinds 1 u={"kinds","o":{"y":2},"m":1} a={"kinds","o":{"x":1}} c={"kinds","o":5}
moved 2 u={"moved","c":2,"a":1} c={"moved","v":3}
pend-all 2 u={"pend-all","a":1} d={"pend-all"} v={"pend-all","m":1}
pend-less 1 u={"pend-less","m":1,"a":1} d={"pend-less","a":2}
pend-more 1 u={"pend-more","a":1} d={"pend-more","m":2} v={"pend-more","m":1}
pend-same 2 u={"pend-same","c":3,"a":1} d={"pend-same","c":3,"a":2} v={"pend-same","m":1}
right 1 u={"right","a":1} d={"right","a":2} a={"right","a":3}
twice 2 u={"twice","a":1} v={"twice","m":1}
unconf 1 u={"unconf","m":1}
unconf-same 2 v={"unconf-same","m":1})");
  EXPECT_EQ(database_.Lines("SELECT DISTINCT CreationTime, Revision FROM Config WHERE Name = 't'"),
            "2020-01-01 7");
}

// Without their ids the two parts of an element would read as two elements.
TEST_F(StoredObjects, ElementsGetTheIdsThatTheirPartsAreFoundBy) {
  const auto type = [](const char* version, const char* items, const char* y) {
    return TypeFile(
        "t", version,
        R"({"type":"object","properties":{"l":{"type":"array","items":{"type":"object")" +
            std::string(items) + R"(,"properties":{"x":{},"y":{)" + y + "}}}}}}");
  };
  Install(type("1", "", ""));
  const ConfigStoreObjectId one("t", "test", "tarn");
  store_->Set(Object(one, R"({"l":[{"x":1,"y":2},{"x":3}]})"), EXTERNAL);
  EXPECT_EQ(Install(type("2", R"(,"generatedInstanceId":true)", R"("cached":true)")).divided.size(),
            1U);
  EXPECT_THAT(Rows(), HasSubstr("c={"));
  EXPECT_EQ(store_->Get(one)->GetData(), R"({"l":[{"y":2,"x":1},{"x":3}]})");
}

TEST_F(StoredObjects, WhatDoesNotFitIsNamedWithWhereItWaits) {
  Install(Type("1", "", "", "", R"(,"rebootRequired":true)"));
  Put("now", R"(UserValue = '{"a":5,"m":1}')");
  Put("pending", R"(UserValue = '{"a":1}', DesiredValue = '{"a":6}')");
  Put("torn", R"(UserValue = '{"a":1}', DesiredValue = '{"a":}')");
  Put("unconf", R"(UserValue = '{"a":7}', VitalValue = '{"v":1}', Success = 0)");
  database_.Run(
      "INSERT INTO DesiredUserConfig VALUES ('tarn','test','t','gone','1',NULL,NULL,NULL,'DELETE'),"
      R"(('tarn','test','t','s','1','{"name":"s","a":8}',NULL,NULL,'SET'))");
  std::string narrow = Type("2", kVital, "", "", R"(,"rebootRequired":true,"required":["a"])");
  narrow.replace(narrow.find("9"), 1, "4");
  const std::string above = "4 is the largest value allowed, found ";
  const auto misfits = ElementsAre(
      "now 0 /a | tarn/test/t/now#/a: " + above + "5",
      "pending 1 /a | tarn/test/t/pending#/a: pending for the next boot: " + above + "6",
      HasSubstr("torn 1 / | tarn/test/t/torn#/: pending for the next boot: DesiredValue is not "
                "valid JSON at byte 19: "),
      "unconf 2 /a | tarn/test/t/unconf#/a: unconfirmed: " + above + "7",
      "s 3 /a | tarn/test/t/s#/a: staged: " + above + "8");
  const std::string before = Rows();
  const TypeReport checked = Install(narrow, {.checkOnly = true, .force = true});
  EXPECT_EQ(checked.outcome, TypeOutcome::VALID);
  EXPECT_THAT(Misfits(checked), misfits);
  const TypeReport refused = Install(narrow);
  EXPECT_EQ(refused.outcome, TypeOutcome::INVALID);
  EXPECT_EQ(GetSchemaVersion(Id("")), "1");
  EXPECT_THAT(Misfits(refused), misfits);
  EXPECT_THAT(refused.divided, IsEmpty());
  EXPECT_EQ(Rows(), before);
  const TypeReport forced = Install(narrow, {.force = true});
  EXPECT_EQ(forced.outcome, TypeOutcome::UPGRADED);
  EXPECT_THAT(Misfits(forced), misfits);
  EXPECT_THAT(Lines(forced.divided), ElementsAre("now 1 divided", "unconf 1 left"));
  EXPECT_THAT(Rows(), StartsWith(R"(now 1 u={"now","a":5} v={"now","m":1})"))
      << "of the version that it fits";
  EXPECT_THAT(Misfits(Install(Type("3", ""))),
              ElementsAre(HasSubstr("torn 1 /"), StartsWith("gone 3 / |"), StartsWith("s 3 / |")))
      << "nobody could take staged changes back";
  EXPECT_THAT(
      Misfits(Install(TypeFile("t", "4"), {.checkOnly = true})),
      Contains(HasSubstr("now 0 / | tarn/test/t/now#/: No instance is found at /tarn/test/t")));
}

TEST_F(StoredObjects, UpgradeBringsRowsUpToDateThatFit) {
  Install(Type("1.0", ""));
  Put("a", R"(UserValue = '{"a":1}')");
  Put("b", R"(UserValue = '{"m":1}')");
  Put("c", R"(UserValue = '{"a":10}')");
  Put("d", R"(UserValue = '{"m":1}', DesiredValue = '{"a":1}')");
  database_.Run(
      "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue) "
      "VALUES ('tarn','test','gone','x','0','{}')");
  Install(Type("2.0", kVital), {.force = true});
  database_.Run(R"(UPDATE Config SET VitalValue = NULL, UserValue = '{"name":"b","m":1}', )"
                "Version = '2' WHERE Identifier = 'b'");
  const auto outdated = [](const ConfigStoreObjectId& prefix) {
    std::string text;
    for (const OutdatedObject& object : ListOutdated(prefix)) {
      text += object.stored.id.instanceId + " " + object.stored.version + " " +
              object.installedVersion + ", ";
    }
    return text;
  };
  EXPECT_EQ(outdated({"", "", "tarn"}), "a 1 2.0, c 1 2.0, d 1 2.0, ");
  EXPECT_EQ(outdated(Id("c")), "c 1 2.0, ");
  const std::string before = Rows();
  const auto done = ElementsAre("a 1 renewed", "b 2 divided", "c 1 unfit /a", "d 1 left");
  EXPECT_THAT(Lines(UpgradeRows("tarn", "test", "t", true)), done);
  EXPECT_EQ(Rows(), before);
  EXPECT_GE(FailEachStep(
                "upgrade", [] { UpgradeRows("", "", "", false); }, [&] { return Rows(); }),
            6);
  EXPECT_EQ(Rows(), R"(a 2.0 u={"a","a":1}
b 2.0 v={"b","m":1}
c 1 u={"c","a":10}
d 1 u={"d","m":1} d={"d","a":1})");
  EXPECT_EQ(database_.Lines("SELECT DISTINCT CreationTime, Revision FROM Config WHERE Name = 't'"),
            "2020-01-01 7");
  EXPECT_THAT(Lines(UpgradeRows("", "", "", false)), ElementsAre("c 1 unfit /a", "d 1 left"));
  EXPECT_THAT(Raised([] { UpgradeRows("tarn", "test", "gone", false); }), StartsWith("CSE 1037 "));
}

// "^" is the place of a tag for all that follows up to the next one, "%" of one for a member.
constexpr const char* kShape = R"({"type":"object","rebootRequired":true,"properties":{
    "name":{"type":"string","instanceId":true},
    "a":{"type":["integer","null"]%}, "b":{"type":["integer","null"]%},
    "o":{"type":"object"^,"properties":{"x":{"type":["integer","null"]%},
      "p":{"type":"object"%,"additionalProperties":true,"x-admits":"z","properties":{"y":{}}}}},
    "l":{"type":"array"^,"items":{"type":"object","properties":{
      "id":{"type":"string","instanceId":true},"x":{"title":""%},"y":{"type":["integer","null"]%}}}},
    "g":{"type":"array"^,"items":{"type":"object","generatedInstanceId":true,"properties":{
      "x":{"title":""%},"y":{"title":""%}}}}}})";

// The shape with tags at some of its places.
std::string Schema(Random& random) {
  std::string schema = kShape;
  bool around = false;
  for (std::size_t at; (at = schema.find_first_of("^%")) != std::string::npos;) {
    const bool list = schema[at] == '^';
    const bool tags = random.OneIn(3) && (list || !around);
    around = list ? tags : around;
    schema.replace(at, 1, !tags ? "" : random.OneIn(2) ? R"(,"vital":true)" : R"(,"cached":true)");
  }
  return schema;
}

class RandomMoves : public StoredObjects {
 protected:
  static std::string Text(const std::vector<ObjectHandle>& objects) {
    std::string text;
    for (const ObjectHandle& object : objects) {
      text += object->GetConfigStoreObjectId().instanceId + Canonical(Parsed(object->GetData())) +
              std::to_string(object->GetRevision()) + object->GetCreationTime() + "\n";
    }
    return text;
  }

  // What all readers of whole objects are answered, and those of automatic values.
  std::string Answers() {
    const auto all = std::make_shared<FilterSpecObject>(Id(""));
    std::string text;
    for (const char* context : {"0", "2"}) {
      SetUpgradeContext(context);
      text += std::string("upgrade ") + context + "\n" + Text(store_->GetInstances(all)) +
              Text(store_->GetDefaultConfigInstances(all));
    }
    SetUpgradeContext("0");
    text += "bulk\n" + Text(GetBulkConfigInternal("tarn", "test"));
    text += "staged\n" + Text(store_->GetNextBootStore()->GetInstances(all));
    for (const std::string& instance : store_->GetInstanceIds(Id(""))) {
      if (const auto automatic =
              GetConfigByBootAndContext(Id(instance), FindSchema(Id("")), AUTO_CONFIG,
                                        GetDBStore(DBStore::Type::CURRENT_STORE, true))) {
        text += "automatic " + Text({automatic});
      }
    }
    text += "waiting\n";
    for (const ObjectHandle& object :
         GetDesiredUserConfigInstances(Id(""), DESIRED_WITH_VITAL_AND_CACHED)) {
      const StoredObject stored = ListStored(object->GetConfigStoreObjectId()).at(0);
      text += stored.hasPending || !stored.confirmed ? Text({object}) : "";
    }
    return text;
  }

  // The same now, once everything is confirmed, and once it is dropped.
  std::string AnswersNowAndLater() {
    std::string text = Answers();
    for (const bool status : {true, false}) {
      database_.Run("CREATE TABLE Kept AS SELECT * FROM Config");
      SetBootStatus(Id(""), status);
      text += (status ? "confirmed\n" : "dropped\n") + Answers();
      database_.Run("DELETE FROM Config; INSERT INTO Config SELECT * FROM Kept; DROP TABLE Kept");
    }
    return text;
  }
};

TEST_F(RandomMoves, ChangeNothingThatIsRead) {
  int outcomes[5] = {};
  database_.Run("PRAGMA synchronous=OFF");
  for (unsigned seed = 20; seed < 36; ++seed) {
    Random random(seed);
    RandomObjects objects(random, 2);
    const auto make = [&](const std::string& instance) {
      return objects.Make(FindSchema(Id(""))->GetSchemaPlace(), instance);
    };
    std::string shipped;
    const auto install = [&](unsigned version, const std::string& schema) {
      return Install(TypeFile("t", std::to_string(1000 * seed + version), schema, shipped));
    };
    database_.Run("DELETE FROM Config; DELETE FROM DesiredUserConfig");
    ASSERT_EQ(install(1, Schema(random)).errors.size(), 0U);
    shipped = R"({"instance":"i1","value":)" + make("i1") + "}";
    ASSERT_EQ(install(2, Schema(random)).errors.size(), 0U);
    for (unsigned row = 0; row < 30; ++row) {
      const std::string instance = "i" + std::to_string(row);
      const auto value = [&](unsigned oneIn) {
        return random.OneIn(oneIn) ? make(instance) : std::string();
      };
      const unsigned often = 1 + row % 2;
      PutRow(Id(instance), value(often), value(4), value(often), value(often), value(often),
             random.OneIn(4) ? 0 : 1);
      database_.Run("INSERT INTO DesiredUserConfig VALUES ('tarn','test','t','" + instance +
                    "','1','" + make(instance) + "',nullif('" + value(2) + "',''),nullif('" +
                    value(2) + "',''),'SET')");
    }
    const std::string before = AnswersNowAndLater();
    const std::string schema = Schema(random);
    const TypeReport report = install(3, schema);
    ASSERT_EQ(report.misfits.size(), 0U);
    ASSERT_EQ(AnswersNowAndLater(), before) << seed;
    for (const RowReport& row : report.divided) {
      ++outcomes[static_cast<int>(row.outcome)];
    }
    // Dividing once is enough; what had to stay goes once nothing waits.
    for (const RowReport& row : install(4, schema).divided) {
      ASSERT_EQ(row.outcome, RowOutcome::LEFT) << seed << " " << row.object.toString();
    }
    SetBootStatus(Id(""), true);
    const std::string confirmed = Answers();
    for (const RowReport& row : UpgradeRows("tarn", "test", "t", false)) {
      ASSERT_LE(row.outcome, RowOutcome::DIVIDED) << seed << " " << row.object.toString();
    }
    ASSERT_EQ(Answers(), confirmed) << seed;
    ASSERT_EQ(ListOutdated(Id("")).size(), 0U);
  }
  for (const RowOutcome outcome :
       {RowOutcome::DIVIDED, RowOutcome::PARTLY_DIVIDED, RowOutcome::LEFT}) {
    EXPECT_GT(outcomes[static_cast<int>(outcome)], 0) << static_cast<int>(outcome);
  }
}

}  // namespace
}  // namespace TarnConfigStore
