#include "tarnconfigstore/config_store.h"

#include "platform/db_testing.h"

#include "persistence/connection.h"
#include "store/config_store_impl.h"
#include "store/next_boot_store_impl.h"
#include "support/captured_log.h"
#include "support/database.h"
#include "support/raised.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace TarnConfigStore {
namespace {

using DBStore::testing::Operation;
using TestSupport::Raised;

// The slots are part of the interface: a caller built against an older header finds its operation
// by place. The Itanium C++ ABI encodes a virtual member function's byte offset, plus one, in its
// pointer.
template <class Function>
std::size_t Slot(Function function) {
  std::uintptr_t encoded = 0;
  static_assert(sizeof function >= sizeof encoded);
  std::memcpy(&encoded, &function, sizeof encoded);
  return (encoded - 1) / sizeof(void*) + 1;
}

TEST(Interfaces, KeepTheirSlots) {
  EXPECT_EQ(Slot(&ConfigStore::GetNextBootStore), 1U);
  EXPECT_EQ(Slot(&ConfigStore::Get), 2U);
  EXPECT_EQ(Slot(&ConfigStore::SetVitalData), 8U);
  EXPECT_EQ(Slot(&ConfigStore::SetCachedData), 9U);
  EXPECT_EQ(Slot(&ConfigStore::DeleteInstances), 12U);
  EXPECT_EQ(Slot(&ConfigStore::SetCachedDataInstances), 16U);
  EXPECT_EQ(Slot(&ConfigStore::SetVitalDataInstances), 17U);
  EXPECT_EQ(Slot(&ConfigStore::GetInstancesRevision), 19U);
  EXPECT_EQ(Slot(&ConfigStore::CancelTransaction), 22U);
  EXPECT_EQ(Slot(&ConfigStore::Validate), 23U);
  EXPECT_EQ(Slot(&NextBootStore::Get), 1U);
  EXPECT_EQ(Slot(&NextBootStore::Reset), 4U);
  EXPECT_EQ(Slot(&NextBootStore::DeleteInstances), 7U);
}

class Transactions : public ::testing::Test {
 protected:
  Transactions() : database_(host_) {
    InstallType(host_, TestSupport::kPlainType);
    store_ = ConfigStore::GetStore("");
  }
  ~Transactions() override { DBStore::testing::SetHook({}); }
  void Set(const char* name) {
    auto object = std::make_shared<ConfigStoreObject>(id_);
    object->SetValue("name", name);
    store_->Set(object, EXTERNAL);
  }
  std::string Stored() {
    const auto rows = database_.Run("SELECT UserValue, Revision FROM Config");
    return rows.empty() ? "nothing" : rows.at(0);
  }
  static void Fail(Operation operation, int status) {
    DBStore::testing::SetHook(
        [=](Operation asked, std::string_view) { return asked == operation ? status : 0; });
  }

  TestSupport::TemporaryHost host_;
  TestSupport::Database database_;
  TestSupport::CapturedLog log_;
  ConfigStoreObjectId id_{"plain", "test", "tarn"};
  std::shared_ptr<ConfigStore> store_;
};

TEST_F(Transactions, TakeEffectAtCommitOrNotAtAll) {
  {
    ConfigStoreTransaction transaction(store_);
    Set("a");
    EXPECT_EQ(Stored(), "nothing") << "others see it at commit";
    EXPECT_EQ(transaction.Commit(), 0);
  }
  EXPECT_EQ(Stored(), R"({"name":"a"} 1)");
  {
    const ConfigStoreTransaction transaction(store_);
    Set("b");
  }
  {
    ConfigStoreTransaction transaction(store_);
    Set("c");
    EXPECT_EQ(transaction.Cancel(), 0);
  }
  EXPECT_EQ(Stored(), R"({"name":"a"} 1)");
}

TEST_F(Transactions, InnerLevelsUndoThemselvesAlone) {
  ConfigStoreTransaction outer(store_);
  Set("a");
  {
    const ConfigStoreTransaction inner(store_);
    Set("b");
  }
  EXPECT_EQ(store_->Get(id_)->GetData(), R"({"name":"a"})");
  {
    ConfigStoreTransaction inner(store_);
    Set("c");
    inner.Commit();
  }
  outer.Commit();
  EXPECT_EQ(Stored(), R"({"name":"c"} 2)");
}

TEST_F(Transactions, GuardsCancelExactlyOnce) {
  int cancels = 0;
  int failingCommit = 0;
  DBStore::testing::SetHook([&](Operation asked, std::string_view) {
    cancels += asked == Operation::CANCEL ? 1 : 0;
    return asked == Operation::COMMIT ? failingCommit : 0;
  });
  { ConfigStoreTransaction(store_).Commit(); }
  EXPECT_EQ(cancels, 0);
  { ConfigStoreTransaction(store_).Cancel(); }
  EXPECT_EQ(cancels, 1);
  failingCommit = 5;
  {
    ConfigStoreTransaction transaction(store_);
    Set("a");
    EXPECT_EQ(Raised([&] { transaction.Commit(); }), "CSE 2000 Commit transaction failed.");
    EXPECT_EQ(cancels, 1);
  }
  EXPECT_EQ(cancels, 2) << "a guard whose commit failed still cancels";
  EXPECT_EQ(Stored(), "nothing");
}

TEST_F(Transactions, ThatCannotBeginCancelNothing) {
  std::shared_ptr<ConfigStore> none;
  EXPECT_EQ(Raised([&] { ConfigStoreTransaction guard(none); }),
            "CSE 2000 Failed to use NULL as the store");
  Fail(Operation::BEGIN, 5);
  EXPECT_EQ(Raised([&] { ConfigStoreTransaction guard(store_); }),
            "CSE 2000 Failed to start a transaction.");
}

TEST_F(Transactions, ARefusedNestedCancelIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        Fail(Operation::CANCEL, 1);
        store_->BeginTransaction();
        store_->CancelTransaction();
      },
      "Failed to cancel nested transaction");
  Fail(Operation::CANCEL, 21);
  EXPECT_EQ(store_->CancelTransaction(), 21) << "any other status is the caller's to judge";
}

// What each operation of the table does to a row of its own.
void Write(const ConfigStoreObjectId& id, const std::shared_ptr<TarnSchemaStore::SchemaObject>&,
           const DBStore::ConnectionHandle& connection) {
  DBStore::WriteKeyValue("written", id.key, connection);
  if (id.key == "coded") {
    throw InvalidArgumentException(CS_MIXED_TYPES, "mixed");
  }
  if (id.key == "standard") {
    throw std::out_of_range("too far");
  }
}

TEST_F(Transactions, OperationsRunUnderOneOfTheirOwn) {
  NextBootStoreImpl nextBoot(GetDBStore(DBStore::Type::CURRENT_STORE, true));
  const auto run = [&](const char* key) {
    return Raised([&] {
      nextBoot.ExecuteUnderTransaction(ConfigStoreObjectId(key, "", ""), nullptr, Write);
    });
  };
  const auto written = [&] {
    const auto rows = database_.Run("SELECT Value FROM KeyValue WHERE Key = 'written'");
    return rows.empty() ? std::string("nothing") : rows.at(0);
  };
  EXPECT_EQ(run("coded"), "IAE 1062 mixed");
  EXPECT_EQ(run("standard"), "CSE 2000 Operation failed: too far");
  EXPECT_EQ(written(), "nothing");
  EXPECT_EQ(run("good"), "nothing");
  EXPECT_EQ(written(), "good");
  Fail(Operation::COMMIT, 13);
  EXPECT_EQ(run("uncommitted"), "CSE 2000 Commit transaction failed.");
  Fail(Operation::BEGIN, 5);
  EXPECT_EQ(run("unbegun"), "CSE 2000 Begin Transaction failed for: ExecuteUnderTransaction");
  DBStore::testing::SetHook({});
  EXPECT_EQ(written(), "good");
  EXPECT_EQ(run("last"), "nothing") << "the connection is still of use";
}

TEST_F(Transactions, ProcessesWriteAtOnceWithoutLosingAny) {
  constexpr int kWrites = 50;
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  auto own = ConfigStore::GetStore("");
  for (int i = 0; i < kWrites; ++i) {
    auto object = std::make_shared<ConfigStoreObject>(id_);
    object->SetValue("name", child == 0 ? "child" : "parent");
    own->Set(object, EXTERNAL);
  }
  if (child == 0) {
    _exit(0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(store_->GetRevision(id_), 2 * kWrites);
}

TEST_F(Transactions, ThreadsWithStoresOfTheirOwnDoNotMeet) {
  constexpr int kThreads = 4;
  constexpr int kWrites = 25;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this] {
      auto store = ConfigStore::GetStore("");
      for (int i = 0; i < kWrites; ++i) {
        ConfigStoreTransaction transaction(store);
        auto object = std::make_shared<ConfigStoreObject>(id_);
        object->SetValue("name", "x");
        store->Set(object, EXTERNAL);
        transaction.Commit();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(store_->GetRevision(id_), kThreads * kWrites);
}

}  // namespace
}  // namespace TarnConfigStore
