// Objects that a store holds: nobody gets one that is not as it is in the database.
#include "tarnconfigstore/held_rows.h"

#include "support/child_process.h"
#include "support/store_fixture.h"
#include "support/threads.h"

#include <atomic>
#include <thread>

namespace TarnConfigStore {
namespace {

class HeldObjects : public TestSupport::StoreFixture {
 protected:
  void TearDown() override {
    SetRowHolding(true);
    StoreFixture::TearDown();
  }
  std::string Read(const Id& id) const {
    const ObjectHandle object = store_->Get(id);
    EXPECT_EQ(store_->GetRevision(id), object ? object->GetRevision() : kDefaultRevision);
    return Data(object) +
           (object ? " v" + object->GetVersion() + " r" + std::to_string(object->GetRevision())
                   : "");
  }
  // As often as it takes for the store to hold it, and once more.
  std::string ReadOften(const Id& id) const {
    const std::string first = Read(id);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(Read(id), first);
    }
    return first;
  }
};

TEST_F(HeldObjects, AreReadAnewAfterEachChange) {
  const auto other = ConfigStore::GetStore("");
  const auto port = [&](int number) {
    return Object(plain_, R"({"name":"n","port":)" + std::to_string(number) + "}");
  };
  const auto run = [&](const char* sql) { database_.Run(sql); };
  const struct {
    const char* name;
    std::function<void()> change;
    const char* expected;
  } changes[] = {
      {"made", [&] { store_->Set(port(1), EXTERNAL); }, R"({"name":"n","port":1} v1.0 r1)"},
      {"own", [&] { store_->Set(port(2), EXTERNAL); }, R"({"name":"n","port":2} v1.0 r2)"},
      {"of another store", [&] { other->Set(port(3), EXTERNAL); },
       R"({"name":"n","port":3} v1.0 r3)"},
      {"cancelled",
       [&] {
         ConfigStoreTransaction transaction(store_);
         store_->Set(port(4), EXTERNAL);
         EXPECT_EQ(Read(plain_), R"({"name":"n","port":4} v1.0 r4)") << "its own";
       },
       R"({"name":"n","port":3} v1.0 r3)"},
      {"committed",
       [&] {
         ConfigStoreTransaction transaction(store_);
         store_->Set(port(5), EXTERNAL);
         EXPECT_EQ(Read(plain_), R"({"name":"n","port":5} v1.0 r4)");
         transaction.Commit();
       },
       R"({"name":"n","port":5} v1.0 r4)"},
      {"past the library",
       [&] { run("UPDATE Config SET Revision = 9, UserValue = '{\"name\":\"n\"}'"); },
       R"({"name":"n"} v1.0 r9)"},
      {"pending", [&] { run("UPDATE Config SET DesiredValue = '{\"name\":\"new\"}'"); },
       R"({"name":"n"} v1.0 r9)"},
      {"an upgrade", [&] { SetUpgradeContext("1"); }, R"({"name":"new"} v1.0 r9)"},
      {"its end", [&] { SetUpgradeContext("0"); }, R"({"name":"n"} v1.0 r9)"},
      {"deleted", [&] { store_->Delete(plain_); }, "none"},
  };
  for (const auto& [name, change, expected] : changes) {
    change();
    EXPECT_EQ(ReadOften(plain_), expected) << name;
  }
}

TEST_F(HeldObjects, AreReadAnewAfterAnotherProcessWrote) {
  Set(plain_, R"({"name":"n"})");
  ReadOften(plain_);
  const auto write = [&] {
    ConfigStore::GetStore("")->Set(Object(plain_, R"({"name":"m"})"), EXTERNAL);
    return 0;
  };
  EXPECT_EQ(TestSupport::InChild(write), 0);
  EXPECT_EQ(ReadOften(plain_), R"({"name":"m"} v1.0 r2)");
}

TEST_F(HeldObjects, BelongToTheirCallersTypesAndStores) {
  Set(plain_, R"({"name":"n","tags":["a"]})");
  ReadOften(plain_);
  const ObjectHandle mine = store_->Get(plain_);
  mine->AppendValue("tags", "b");
  mine->SetValue("name", "m");
  EXPECT_EQ(ReadOften(plain_), R"({"name":"n","tags":["a"]} v1.0 r1)");

  // Of a type whose next version tells the elements of a list by an id, and so lays them over each other.
  const auto install = [&](const char* version, const char* id) {
    TestSupport::InstallType(
        host_,
        TestSupport::TypeFile("listed", version,
                              std::string(R"({"type":"object","properties":{"list":{"type":"array",
        "items":{"type":"object","properties":{"id":{"type":"string")") +
                                  id + "}}}}}}")
            .c_str());
  };
  install("1.0", "");
  const Id listed("listed", "test", "tarn");
  PutRow(listed, R"({"list":[{"id":"a"}]})", "", R"({"list":[{"id":"b"}]})", "", "", 1);
  EXPECT_EQ(ReadOften(listed), R"({"list":[{"id":"a"}]} v1 r7)");
  install("2.0", R"(,"instanceId":true)");
  EXPECT_EQ(ReadOften(listed), R"({"list":[{"id":"b"},{"id":"a"}]} v1 r7)");
}

TEST_F(HeldObjects, AreNoReasonToReadAStoreThatIsGone) {
  Set(plain_, R"({"name":"n"})");
  ReadOften(plain_);
  EXPECT_EQ(TestSupport::InChild([&] {
              return TestSupport::Raised([&] { store_->Get(plain_); }) == "nothing" ? 1 : 0;
            }),
            0)
      << "a child reads by a store of its own";
  Fail(Operation::EXECUTE);
  EXPECT_NE(TestSupport::Raised([&] { store_->Get(plain_); }), "nothing");
  DBStore::testing::SetHook({});
  EXPECT_EQ(ReadOften(plain_), R"({"name":"n"} v1.0 r1)");
  for (const bool hold : {false, true}) {
    SetRowHolding(hold);
    EXPECT_EQ(ReadOften(plain_), R"({"name":"n"} v1.0 r1)");
  }
  const TestSupport::TemporaryHost other;
  InstallType(other, TestSupport::kPlainType);
  EXPECT_EQ(TestSupport::Raised([&] { store_->Get(plain_); }).substr(0, 8), "CSE 2000")
      << "the host is another one";
}

// Each reader sees what was committed before it began to read: numbers never go back.
TEST_F(HeldObjects, AreNeverOlderThanWhatWasSeenBefore) {
  constexpr int kWrites = 100;
  Set(plain_, R"({"name":"n"})");
  std::atomic<int> committed{1};
  std::atomic<bool> done{false};
  std::atomic<int> stale{0};
  TestSupport::InThreads(3, [&](int number) {
    if (number == 0) {
      const auto writer = ConfigStore::GetStore("");
      for (int i = 0; i < kWrites; ++i) {
        // Now by the store that is read, now by another.
        (i % 2 == 0 ? writer : store_)->Set(Object(plain_, R"({"name":"n"})"), EXTERNAL);
        committed.fetch_add(1);
        std::this_thread::yield();
      }
      done = true;
    }
    while (!done) {
      const int least = committed.load();
      stale += store_->Get(plain_)->GetRevision() < least ? 1 : 0;
    }
  });
  EXPECT_EQ(stale, 0);
}

}  // namespace
}  // namespace TarnConfigStore
