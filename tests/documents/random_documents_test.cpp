// Documents of random states, brought to other random states.
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/drift.h"

#include "objects/schema_lookup.h"
#include "support/next_boot_fixture.h"
#include "support/random_objects.h"
#include "support/sanitized.h"

namespace TarnConfigStore {
namespace {

class RandomDocuments : public TestSupport::NextBootFixture {
 protected:
  RandomDocuments() { InstallType(host_, TestSupport::kManyWaysType); }

  static std::string Export(bool allParts) {
    return ExportConfigText({"", "", ""}, {.allParts = allParts});
  }
  std::string Table() {
    return database_.Lines(
               "SELECT Name, Identifier, Version, ifnull(UserValue,'-'), ifnull(AutoConfValue,'-'),"
               " ifnull(VitalValue,'-'), ifnull(CachedValue,'-'), ifnull(DesiredValue,'-'), "
               "Success,"
               " Revision, CreationTime FROM Config ORDER BY Name, Identifier") +
           "\n" + database_.Staged();
  }

  // Some writes of every kind, each refused or not.
  void Disturb(int writes) {
    for (int i = 0; i < writes; ++i) {
      const std::string instance(1, static_cast<char>('a' + random_.Below(4)));
      const char* keys[] = {"ways", "switch", "many-switch", "plain"};
      const std::string key = keys[random_.Below(4)];
      const Id id(key, "test", "tarn", key == "plain" ? "" : instance);
      const auto object =
          Object(id, key == "plain" ? R"({"name":")" + std::to_string(random_.Below(3)) + "\"}"
                                    : objects_.Make(FindSchema(id)->GetSchemaPlace(), instance));
      SetUpgradeContext(random_.OneIn(4) ? "2" : "0");
      const auto context = random_.OneIn(2) ? EXTERNAL : AUTO_CONFIG;
      try {
        switch (random_.Below(7)) {
          case 0:
            store_->Set(object, context);
            break;
          case 1:
            store_->SetUserData(object, context);
            break;
          case 2:
            store_->SetVitalData(object);
            break;
          case 3:
            store_->SetCachedData(object);
            break;
          case 4:
            store_->Update(object, context);
            break;
          case 5:
            store_->Delete(id);
            break;
          default:
            random_.OneIn(3) ? nextBoot_->Delete(id) : nextBoot_->Set(object);
        }
      } catch (const ConfigStoreException&) {
        // Not every object is one of the part.
      }
      if (random_.OneIn(4)) {
        database_.Run("UPDATE Config SET DesiredValue = UserValue WHERE Identifier = '" + instance +
                      "'");
      }
    }
    SetUpgradeContext("0");
  }

  TestSupport::Random random_;
  TestSupport::RandomObjects objects_{random_, 3};
};

TEST_F(RandomDocuments, BringOneStateToAnother) {
  int changed = 0;
  const int rounds = TestSupport::kSanitized ? 30 : 150;
  for (int round = 0; round < rounds; ++round) {
    Disturb(12);
    const bool allParts = random_.OneIn(2);
    const std::string wanted = Export(allParts);
    const std::string table = Table();
    const auto fits = [&] {
      const DocumentReport report =
          ImportConfig(wanted, {.mode = ImportMode::REPLACE_ALL, .check = true});
      EXPECT_TRUE(report.Fits()) << report.ToJson() << Table() << wanted;
      return report.Fits();
    };
    ASSERT_TRUE(fits());
    for (const DriftObject& none : ComputeDrift(wanted, {.complete = true})) {
      FAIL() << none.GetConfigStoreObjectId().toString() << none.ToJson() << table << wanted;
    }
    Disturb(6);
    const std::string before = Table();
    const bool differs = Export(allParts) != wanted;

    ASSERT_TRUE(fits());
    const auto drift = ComputeDrift(wanted, {.complete = true});
    ImportOptions options{.mode = ImportMode::REPLACE_ALL, .check = true};
    const DocumentReport said = ImportConfig(wanted, options);
    ASSERT_EQ(Table(), before);
    options.check = false;
    const DocumentReport done = ImportConfig(wanted, options);
    ASSERT_EQ(done.ToJson(), said.ToJson());
    std::size_t changes = 0;
    for (const ObjectResult& result : done.objects) {
      changes += result.outcome != ObjectOutcome::UNCHANGED ? 1 : 0;
    }
    ASSERT_EQ(drift.size(), changes);
    for (const DriftObject& object : drift) {
      EXPECT_FALSE(object.GetMembers().empty())
          << object.GetConfigStoreObjectId().toString() << before;
      EXPECT_EQ(DriftObject(object.GetConfigStoreObjectId(), object.ToJson()).ToJson(),
                object.ToJson());
    }
    // A difference in what the store generates, in the order of members or in times is none.
    ASSERT_TRUE(ComputeDrift(wanted, {.complete = true}).empty()) << wanted;
    ASSERT_FALSE(ApplyConfig(wanted, {.prune = true}).Changes());
    if (differs) {
      ++changed;
    } else {
      EXPECT_EQ(Table(), before);
    }
    if (allParts) {
      database_.Run("DELETE FROM Config");
      database_.Run("DELETE FROM DesiredUserConfig");
      ImportConfig(wanted, options);
      ASSERT_EQ(Table(), table) << wanted;
      ASSERT_EQ(Export(true), wanted);
    }
  }
  EXPECT_GT(changed, rounds / 4);
}

}  // namespace
}  // namespace TarnConfigStore
