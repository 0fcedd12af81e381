#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/listing.h"

#include "admin/type_folder.h"
#include "objects/division.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "support/random_objects.h"
#include "support/store_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Canonical;
using TestSupport::Parsed;

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
std::string Schema(TestSupport::Random& random) {
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

class RandomMoves : public TestSupport::StoreFixture {
 protected:
  static ConfigStoreObjectId Id(const std::string& instance = "") {
    return {"t", "test", "tarn", instance};
  }
  static DBStore::ConnectionHandle Connection() {
    return GetDBStore(DBStore::Type::CURRENT_STORE, true);
  }
  TypeReport Install(unsigned version, const std::string& schema) {
    folder_.Write("t.json", TestSupport::TypeFile("t", std::to_string(version), schema, shipped_));
    return InstallTypes({folder_.Path()}, {}).at(0);
  }
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
    const auto all = std::make_shared<FilterSpecObject>(Id());
    std::string text;
    for (const char* context : {"0", "2"}) {
      SetUpgradeContext(context);
      text += std::string("upgrade ") + context + "\n" + Text(store_->GetInstances(all)) +
              Text(store_->GetDefaultConfigInstances(all));
    }
    SetUpgradeContext("0");
    text += "bulk\n" + Text(GetBulkConfigInternal("tarn", "test"));
    text += "staged\n" + Text(store_->GetNextBootStore()->GetInstances(all));
    for (const std::string& instance : store_->GetInstanceIds(Id())) {
      if (const auto automatic = GetConfigByBootAndContext(Id(instance), FindSchema(Id()),
                                                           AUTO_CONFIG, Connection())) {
        text += "automatic " + Text({automatic});
      }
    }
    text += "waiting\n";
    for (const ObjectHandle& object :
         GetDesiredUserConfigInstances(Id(), DESIRED_WITH_VITAL_AND_CACHED)) {
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
      SetBootStatus(Id(), status);
      text += (status ? "confirmed\n" : "dropped\n") + Answers();
      database_.Run("DELETE FROM Config; INSERT INTO Config SELECT * FROM Kept; DROP TABLE Kept");
    }
    return text;
  }

  TestSupport::TypeFolder folder_{host_};
  std::string shipped_;
};

TEST_F(RandomMoves, ChangeNothingThatIsRead) {
  int outcomes[5] = {};
  database_.Run("PRAGMA synchronous=OFF");
  for (unsigned seed = 20; seed < 36; ++seed) {
    TestSupport::Random random(seed);
    TestSupport::RandomObjects objects(random, 2);
    const auto make = [&](const std::string& instance) {
      return objects.Make(FindSchema(Id())->GetSchemaPlace(), instance);
    };
    database_.Run("DELETE FROM Config; DELETE FROM DesiredUserConfig");
    shipped_.clear();
    ASSERT_EQ(Install(1000 * seed + 1, Schema(random)).errors.size(), 0U);
    shipped_ = R"({"instance":"i1","value":)" + make("i1") + "}";
    ASSERT_EQ(Install(1000 * seed + 2, Schema(random)).errors.size(), 0U);
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
    const TypeReport report = Install(1000 * seed + 3, schema);
    ASSERT_EQ(report.misfits.size(), 0U);
    ASSERT_EQ(AnswersNowAndLater(), before) << seed;
    for (const RowReport& row : report.divided) {
      ++outcomes[static_cast<int>(row.outcome)];
    }
    // Where nothing waits, every member is in its part now.
    for (const auto& [column, part] : {std::pair("UserValue", &ColumnValues::user),
                                       std::pair("VitalValue", &ColumnValues::vital),
                                       std::pair("CachedValue", &ColumnValues::cached)}) {
      for (const std::string& text :
           database_.Run("SELECT " + std::string(column) +
                         " FROM Config WHERE Success = 1 AND DesiredValue IS NULL")) {
        const Json::Document value = Parsed(text == "-" ? "null" : text);
        if (value.IsNull()) {
          continue;
        }
        const auto own = DivideValue(value, *FindSchema(Id()), EXTERNAL).*part;
        const std::string name = value["name"].GetString();
        ASSERT_EQ(Canonical(own ? Parsed(*own) : Parsed("{\"name\":\"" + name + "\"}")),
                  Canonical(value))
            << seed << " " << text;
      }
    }
    // Dividing once is enough; what had to stay goes once nothing waits.
    for (const RowReport& row : Install(1000 * seed + 4, schema).divided) {
      ASSERT_EQ(row.outcome, RowOutcome::LEFT) << seed << " " << row.object.toString();
    }
    SetBootStatus(Id(), true);
    const std::string confirmed = Answers();
    for (const RowReport& row : UpgradeRows("tarn", "test", "t", false)) {
      ASSERT_LE(row.outcome, RowOutcome::DIVIDED) << seed << " " << row.object.toString();
    }
    ASSERT_EQ(Answers(), confirmed) << seed;
    ASSERT_EQ(ListOutdated(Id()).size(), 0U);
  }
  for (const RowOutcome outcome :
       {RowOutcome::DIVIDED, RowOutcome::PARTLY_DIVIDED, RowOutcome::LEFT}) {
    EXPECT_GT(outcomes[static_cast<int>(outcome)], 0) << static_cast<int>(outcome);
  }
}

}  // namespace
}  // namespace TarnConfigStore
