// Guards of transactions, and the slots of the interfaces that writes are called by.
#include "tarnconfigstore/next_boot_store.h"

#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/write_by_context.h"
#include "store/under_transaction.h"
#include "support/store_fixture.h"

#include <cstring>
#include <stdexcept>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

// The slots are part of the interface: a caller built against an older header finds its operation
// by place. The Itanium C++ ABI encodes a virtual member function's byte offset, plus one, in its
// pointer.
template <class... Functions>
std::vector<std::size_t> Slots(Functions... functions) {
  const auto slot = [](auto function) {
    std::uintptr_t encoded = 0;
    static_assert(sizeof function >= sizeof encoded);
    std::memcpy(&encoded, &function, sizeof encoded);
    return (encoded - 1) / sizeof(void*) + 1;
  };
  return {slot(functions)...};
}

TEST(Interfaces, KeepTheirSlots) {
  EXPECT_EQ(Slots(&ConfigStore::GetNextBootStore, &ConfigStore::Get, &ConfigStore::SetVitalData,
                  &ConfigStore::SetCachedData, &ConfigStore::DeleteInstances,
                  &ConfigStore::SetCachedDataInstances, &ConfigStore::SetVitalDataInstances,
                  &ConfigStore::GetInstancesRevision, &ConfigStore::CancelTransaction,
                  &ConfigStore::Validate),
            (std::vector<std::size_t>{1, 2, 8, 9, 12, 16, 17, 19, 22, 23}));
  EXPECT_EQ(Slots(&NextBootStore::Get, &NextBootStore::Reset, &NextBootStore::DeleteInstances),
            (std::vector<std::size_t>{1, 4, 7}));
}

using Transactions = TestSupport::StoreFixture;

TEST_F(Transactions, GuardsCancelExactlyOnce) {
  int cancels = 0;
  int failingCommit = 0;
  DBStore::testing::SetHook([&](Operation asked, std::string_view) {
    cancels += asked == Operation::CANCEL ? 1 : 0;
    return asked == Operation::COMMIT ? failingCommit : 0;
  });
  { EXPECT_EQ(ConfigStoreTransaction(store_).Commit(), 0); }
  EXPECT_EQ(cancels, 0);
  { EXPECT_EQ(ConfigStoreTransaction(store_).Cancel(), 0); }
  EXPECT_EQ(cancels, 1);
  failingCommit = 5;
  {
    ConfigStoreTransaction transaction(store_);
    Set(plain_, R"({"name":"a"})");
    EXPECT_EQ(Raised([&] { transaction.Commit(); }), "CSE 2000 Commit transaction failed.");
    EXPECT_EQ(cancels, 1);
  }
  EXPECT_EQ(cancels, 2) << "a guard whose commit failed still cancels";
  EXPECT_EQ(database_.Rows(), "");
  std::shared_ptr<ConfigStore> none;
  Fail(Operation::BEGIN, 5);
  ExpectRaised(
      {{"CSE 2000 Failed to use NULL as the store", [&] { ConfigStoreTransaction guard(none); }},
       {"CSE 2000 Failed to start a transaction.", [&] { ConfigStoreTransaction guard(store_); }}});
}

TEST_F(Transactions, ARefusedNestedCancelIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        Fail(Operation::CANCEL);
        store_->BeginTransaction();
        store_->CancelTransaction();
      },
      "Failed to cancel nested transaction");
  Fail(Operation::CANCEL, 21);
  EXPECT_EQ(store_->CancelTransaction(), 21) << "any other status is the caller's to judge";
}

TEST_F(Transactions, FailuresThatAreNotTheLibrarysUndoAnOperationToo) {
  const auto connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  const auto write = [&](const char* value, bool fails) {
    return Raised([&] {
      RunUnderTransaction(connection, "Test", [&] {
        DBStore::WriteKeyValue("written", value, connection);
        if (fails) {
          throw std::out_of_range("too far");
        }
      });
    });
  };
  EXPECT_EQ(write("bad", true), "CSE 2000 Operation failed: too far");
  EXPECT_EQ(database_.Lines("SELECT Value FROM KeyValue"), "");
  EXPECT_EQ(write("good", false), "nothing") << "the connection is still of use";
  EXPECT_EQ(database_.Lines("SELECT Value FROM KeyValue"), "good");
}

}  // namespace
}  // namespace TarnConfigStore
