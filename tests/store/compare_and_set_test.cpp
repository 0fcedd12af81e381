// Writing what was worked out from an object that was read, unless somebody was faster.
#include "tarnconfigstore/compare_and_set.h"

#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/taking_back.h"
#include "tarnconfigstore/typed.h"

#include "support/next_boot_fixture.h"

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

class CompareAndSet : public TestSupport::NextBootFixture {
 protected:
  // What would be written over it now.
  std::string Changed(const StoredState& state) {
    std::string text;
    for (const ConfigStoreObjectId& id : FindChanged(*store_, {state})) {
      text += id.key + "/" + id.instanceId;
    }
    return text;
  }
};

TEST_F(CompareAndSet, NoticesWhateverOthersChangedOfTheObject) {
  const Id id = Many("a");
  const auto other = ConfigStore::GetStore("");
  const auto otherNextBoot = other->GetNextBootStore();
  const auto run = [this](const char* sql) { return [this, sql] { database_.Run(sql); }; };
  PutRow("a", "\"mtu\":1", "\"mtu\":2", "", "", 0);
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"a set", [&] { other->Set(Mtu("a", 5), EXTERNAL); }},
      {"another layer", [&] { other->SetUserData(Mtu("a", 6), AUTO_CONFIG); }},
      {"a pending value", run("UPDATE Config SET DesiredValue = '{}'")},
      {"its going", run("UPDATE Config SET DesiredValue = NULL")},
      {"a confirmation", run("UPDATE Config SET Success = 1 - Success")},
      {"a vital value", run("UPDATE Config SET VitalValue = '{\"name\":\"a\"}'")},
      {"its going", run("UPDATE Config SET VitalValue = NULL")},
      {"a cached value", run("UPDATE Config SET CachedValue = '{\"name\":\"a\"}'")},
      {"a redivision", run("UPDATE Config SET Version = '9'")},
      {"a deletion", [&] { other->Delete(id); }},
      {"a creation", [&] { other->Set(Mtu("a", 6), EXTERNAL); }},
      {"another creation", run("UPDATE Config SET CreationTime = '2001-01-01 00:00:00'")},
      {"a staged change", [&] { otherNextBoot->Set(Mtu("a", 7)); }},
      {"another staged change", [&] { otherNextBoot->Set(Mtu("a", 8)); }},
      {"a staged deletion", [&] { otherNextBoot->Delete(id); }},
      {"its going", [&] { otherNextBoot->Reset(id); }},
      {"a staged deletion of all", run("INSERT INTO DesiredUserConfig (Component, ConfigGroup, "
                                       "Name, Identifier, Version, BootAction) VALUES ('tarn', "
                                       "'test', 'many-switch', 'any', '1', 'DELETE')")},
  };
  for (const auto& [what, change] : changes) {
    const StoredState before = GetState(*store_, id);
    EXPECT_EQ(Changed(before), "") << what;
    change();
    EXPECT_EQ(Changed(before), "many-switch/a") << what;
  }
  const StoredState before = GetState(*store_, id);
  otherNextBoot->Set(Mtu("b", 7));
  other->Set(Mtu("b", 7), EXTERNAL);
  EXPECT_EQ(Changed(before), "") << "another instance is nobody's business";
}

TEST_F(CompareAndSet, WritesAllOrNothing) {
  const ObjectForChange plain = GetForChange(*store_, plain_);
  EXPECT_EQ(Data(plain.object), "none");
  EXPECT_EQ(plain.state.GetRevision(), kDefaultRevision);
  Set(switch_, R"({"name":"s1","mtu":1500,"serial":"x"})");
  const ObjectForChange read = GetForChange(*store_, switch_);
  EXPECT_EQ(Data(read.object), Data(store_->Get(switch_)));
  EXPECT_EQ(read.state.GetRevision(), 1);
  const auto write = [&] {
    store_->Set(Object(plain_, R"({"name":"p"})"), EXTERNAL);
    UnsetMembers(*store_, switch_, {"/mtu"});
    ImportConfig(*store_,
                 R"({"format":1,"config":{"tarn":{"test":{"switch":[{"name":"s2","mtu":9}]}}}})",
                 {});
  };
  const std::string before = State();
  EXPECT_THROW((void)WriteIfUnchanged(*store_, {read.state},
                                      [&] {
                                        write();
                                        ResetObject(*store_, switch_, ResetTarget::DEFAULTS,
                                                    "no pointer");
                                      }),
               InvalidArgumentException);
  EXPECT_EQ(State(), before);
  EXPECT_TRUE(WriteIfUnchanged(*store_, {plain.state, read.state}, write).empty());
  EXPECT_EQ(
      Data(store_->Get(plain_)) + Data(store_->GetInstances(Filter({"switch", "test", "tarn"}))),
      R"({"name":"p"}s1{"name":"s1","serial":"x"} s2{"name":"s2","mtu":9} )");
  // The states are those of before; nothing of a second round is written.
  const std::string after = State();
  const auto changed = WriteIfUnchanged(*store_, {plain.state, read.state},
                                        [] { FAIL() << "written over somebody else's change"; });
  EXPECT_EQ(changed, (std::vector<Id>{plain_, switch_}));
  EXPECT_EQ(State(), after);
}

TEST_F(CompareAndSet, JoinsTheCallersTransactionAndSaysWhatFails) {
  const StoredState absent = GetState(*store_, plain_);
  {
    ConfigStoreTransaction transaction(store_);
    const auto write = [&] { Set(plain_, R"({"name":"p"})"); };
    EXPECT_TRUE(WriteIfUnchanged(*store_, {absent}, write).empty());
    EXPECT_EQ(WriteIfUnchanged(*store_, {absent}, write).size(), 1U) << "it sees what it wrote";
  }
  EXPECT_EQ(Data(store_->Get(plain_)), "none");
  DBStore::testing::SetHook([](Operation asked, std::string_view) {
    return asked == Operation::BEGIN || asked == Operation::EXECUTE ? 1 : 0;
  });
  ExpectRaised(
      {{"CSE 2000 Failed to start a transaction.",
        [&] { (void)WriteIfUnchanged(*store_, {absent}, [] {}); }},
       {"CSE 2000 Get failed: ", [&] { (void)FindChanged(*store_, {absent}); }},
       {"CSE 2000 Get failed: ", [&] { GetState(*store_, plain_); }},
       {"CSE 1037", [&] { GetState(*store_, Id("no", "such", "type")); }},
       {"VE 2000", [&] { GetForChange(*store_, Id("plain", "test", "tarn", "instance")); }}});
}

}  // namespace
}  // namespace TarnConfigStore
