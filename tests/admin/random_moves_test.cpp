#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/listing.h"

#include "admin/type_folder.h"
#include "objects/division.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/read_current.h"
#include "support/store_fixture.h"

#include <algorithm>
#include <random>

namespace TarnConfigStore {
namespace {

// Types of one shape with tags at random places, and values for the columns of their rows.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::string Schema() {
    // "^" is the place of a tag for all that follows up to the next one, "%" of one for a member.
    std::string schema = R"({"type":"object","rebootRequired":true,"properties":{
      "name":{"type":"string","instanceId":true}, "a":{"title":""%}, "b":{"title":""%},
      "o":{"type":"object"^,"properties":{"x":{"title":""%},
        "p":{"type":"object"%,"additionalProperties":true,"properties":{"y":{}}}}},
      "l":{"type":"array"^,"items":{"type":"object","properties":{
        "id":{"type":"string","instanceId":true},"x":{"title":""%},"y":{"title":""%}}}},
      "g":{"type":"array"^,"items":{"type":"object","generatedInstanceId":true,"properties":{
        "x":{"title":""%},"y":{"title":""%}}}}}})";
    bool around = false;
    for (std::size_t at; (at = schema.find_first_of("^%")) != std::string::npos;) {
      const bool list = schema[at] == '^';
      const bool tags = One(3) && (list || !around);
      around = list ? tags : around;
      schema.replace(at, 1, !tags ? "" : One(2) ? R"(,"vital":true)" : R"(,"cached":true)");
    }
    return schema;
  }

  std::string Value(const std::string& instance) {
    const std::string p = R"("p":{)" + Some({Member("y"), Member("z")}) + "}";
    const std::string members = Some({Member("a"), Member("b"), List("l"), List("g"),
                                      R"("o":{)" + Some({Member("x"), p}) + "}"});
    return R"({"name":")" + instance + (members.empty() ? "\"}" : "\"," + members + "}");
  }

  bool One(unsigned in) { return random_() % in == 0; }

 private:
  std::string Some(std::vector<std::string> members) {
    std::shuffle(members.begin(), members.end(), random_);
    std::string some;
    for (const std::string& member : members) {
      some += One(2) ? "" : (some.empty() ? "" : ",") + member;
    }
    return some;
  }
  std::string Member(const char* name) {
    return "\"" + std::string(name) + "\":" + (One(8) ? "null" : std::to_string(random_() % 2));
  }
  std::string List(const std::string& name) {
    std::vector<std::string> elements;
    for (const char* id : {"1", "2", "3"}) {
      const std::string more = Some({Member("x"), Member("y")});
      elements.push_back((name == "l" ? R"({"id":")" : R"({"cs_generated_id":")") +
                         std::string(id) + (more.empty() ? "\"}" : "\"," + more + "}"));
    }
    return "\"" + name + "\":[" + Some(std::move(elements)) + "]";
  }

  std::mt19937 random_;
};

// A value with its members sorted, and without those that are null.
std::string Canonical(const Json::Value& value) {
  std::string text;
  std::vector<std::string> parts;
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      parts.push_back(
          member.value.IsNull() ? "" : Json::Text(member.name).data() + Canonical(member.value));
    }
    std::sort(parts.begin(), parts.end());
  } else if (value.IsArray()) {
    for (const Json::Value& element : value.GetArray()) {
      parts.push_back(Canonical(element));
    }
  } else {
    Json::Serialize(value, text);
  }
  for (const std::string& part : parts) {
    text += part.empty() ? "" : part + " ";
  }
  return value.IsObject() ? "{" + text + "}" : value.IsArray() ? "[" + text + "]" : text;
}

Json::Document Parsed(const std::string& text) {
  Json::Document value;
  Json::Parse(text, value);
  return value;
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
      const std::string& instance = object->GetConfigStoreObjectId().instanceId;
      if (!database_
               .Run("SELECT 1 FROM Config WHERE Name = 't' AND Identifier = '" + instance +
                    "' AND (DesiredValue NOT NULL OR Success = 0)")
               .empty()) {
        text += Text({object});
      }
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
  constexpr const char* kColumns[] = {"UserValue", "DesiredValue", "AutoConfValue", "VitalValue",
                                      "CachedValue"};
  int outcomes[5] = {};
  database_.Run("PRAGMA synchronous=OFF");
  for (unsigned seed = 20; seed < 36; ++seed) {
    Generator generator(seed);
    shipped_ = R"({"instance":"i1","value":)" + generator.Value("i1") + "}";
    ASSERT_EQ(Install(1000 * seed + 1, generator.Schema()).errors.size(), 0U);
    database_.Run("DELETE FROM Config; DELETE FROM DesiredUserConfig");
    for (unsigned row = 0; row < 30; ++row) {
      const std::string instance = "i" + std::to_string(row);
      const auto value = [&](unsigned oneIn) {
        return generator.One(oneIn) ? "'" + generator.Value(instance) + "'" : "NULL";
      };
      std::string values;
      for (const char* column : kColumns) {
        values += "," + value(column == kColumns[1] ? 4 : 1 + row % 2);
      }
      const std::string key = "('tarn','test','t','" + instance + "','1'";
      database_.Run(
          "INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue, "
          "DesiredValue, AutoConfValue, VitalValue, CachedValue, Success, CreationTime, Revision) "
          "VALUES " +
          key + values + "," + (generator.One(4) ? "0" : "1") + ",'2020-01-01', 7)");
      database_.Run("INSERT INTO DesiredUserConfig VALUES " + key + ",'" +
                    generator.Value(instance) + "'," + value(2) + "," + value(2) + ",'SET')");
    }
    const std::string before = AnswersNowAndLater();
    const std::string schema = generator.Schema();
    TypeReport report = Install(1000 * seed + 2, schema);
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
    for (const RowReport& row : Install(1000 * seed + 3, schema).divided) {
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
