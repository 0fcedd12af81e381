#include "platform/schema_store.h"

#include "platform/db_store.h"
#include "platform/db_testing.h"
#include "platform/store_error.h"

#include "schema/file_stamp.h"
#include "schema/keep_type.h"
#include "support/child_process.h"
#include "support/sanitized.h"
#include "support/temporary_host.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <thread>

namespace TarnSchemaStore {
namespace {

using namespace TestSupport;

constexpr const char* kAnySchema = R"({"type":"object"})";

class SchemaStoreTest : public testing::Test {
 protected:
  const TemporaryHost host_;
  const std::string path_ = host_.Path(HostPaths::kSchemaStore);
};

std::shared_ptr<SchemaObject> Get(const std::string& key) {
  return SchemaStore::GetStore(false)->GetSchemaObject("tarn", "test", key);
}

std::string VersionOf(const std::string& key) {
  const auto type = Get(key);
  return type ? type->GetVersion() : "none";
}

// Until the file's time stamps are old enough to be trusted, each look reads the generation.
void LetTheFileSettle() {
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
}

std::uint64_t OpensDuring(const std::function<void()>& action) {
  const std::uint64_t before = DBStore::testing::GetCounters().opens;
  action();
  return DBStore::testing::GetCounters().opens - before;
}

TEST_F(SchemaStoreTest, TypeIsReadOnFirstUseAndKeptAndSoIsThatItIsAbsent) {
  KeepType("one", kAnySchema);
  KeepType("two", kAnySchema);
  LetTheFileSettle();
  std::shared_ptr<SchemaObject> first;
  EXPECT_EQ(OpensDuring([&] { first = Get("one"); }), 1U);
  EXPECT_EQ(OpensDuring([&] { EXPECT_EQ(Get("one"), first); }), 0U);
  EXPECT_EQ(SchemaStore::GetCache()->GetSchemaObject("tarn", "test", "one"), first);
  EXPECT_EQ(VersionOf("later"), "none");
  EXPECT_EQ(OpensDuring([] { EXPECT_EQ(VersionOf("later"), "none"); }), 0U);
  KeepType("later", kAnySchema);
  EXPECT_EQ(VersionOf("later"), "1.0");
  EXPECT_EQ(SchemaStore::GetCache()->GetSchemaObject("tarn", "testo", "ne"), nullptr);
  const std::vector<TypeName> expected = {
      {"tarn", "test", "later"}, {"tarn", "test", "one"}, {"tarn", "test", "two"}};
  EXPECT_EQ(SchemaStore::GetCache()->GetTypes(), expected);
}

// Many changes in a row, faster than the file system's clock ticks and of one size.
TEST_F(SchemaStoreTest, EveryChangeIsSeenAtTheNextLookAndLeavesWhatWasHandedOut) {
  KeepType("busy", R"({"properties":{"a":{"default":1}}})");
  const auto old = Get("busy");
  for (int version = 100; version < 150; ++version) {
    KeepType("busy", kAnySchema, std::to_string(version));
    ASSERT_EQ(VersionOf("busy"), std::to_string(version));
  }
  EXPECT_EQ(old->GetVersion(), "1.0");
  EXPECT_NE(old->GetPropertyValueSchema("a"), nullptr);
}

TEST(FileStampTest, SpeaksForTheFutureOnlyWhenTheFileWasAtRest) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  constexpr std::int64_t kTaken = 100 * kSecond;
  const auto mayHide = [](std::int64_t modified, std::int64_t changed) {
    return MayHideChanges(FileStamp{1, 2, 3, modified, changed}, kTaken);
  };
  EXPECT_FALSE(mayHide(99 * kSecond, 98 * kSecond));
  EXPECT_TRUE(mayHide(kTaken - kSecond / 20, 0));
  EXPECT_TRUE(mayHide(0, kTaken - kSecond / 20));
  EXPECT_TRUE(mayHide(kTaken + kSecond / 20, 0));
  // The clock was set back: a write would get a time of its own.
  EXPECT_FALSE(mayHide(200 * kSecond, 200 * kSecond));
  EXPECT_FALSE(MayHideChanges(FileStamp(), kTaken));
}

TEST_F(SchemaStoreTest, ChangesByAnotherProcessAreSeenAndNewTypesAtOnce) {
  KeepType("one", kAnySchema, "0");
  for (int i = 1; i <= 3; ++i) {
    const std::string key = "later" + std::to_string(i);
    const std::string version = std::to_string(i);
    LetTheFileSettle();
    EXPECT_EQ(VersionOf("one"), std::to_string(i - 1));
    EXPECT_EQ(VersionOf(key), "none");
    InChild([&key] {
      KeepType(key, kAnySchema);
      return 0;
    });
    EXPECT_EQ(VersionOf(key), "1.0");
    LetTheFileSettle();
    EXPECT_EQ(VersionOf("one"), std::to_string(i - 1));
    EXPECT_EQ(InChild([&version] {
                KeepType("one", kAnySchema, version);
                return VersionOf("one") == version ? 0 : 1;  // its own change is seen at once
              }),
              0);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // some ticks of the clock
    EXPECT_EQ(VersionOf("one"), version);
  }
}

// A restored backup can have the same generation and size.
TEST_F(SchemaStoreTest, ReplacedFilesAndOtherRootsAreSeen) {
  KeepType("one", kAnySchema, "1.0");
  std::filesystem::copy_file(path_, path_ + ".backup");
  KeepType("one", kAnySchema, "2.0");
  LetTheFileSettle();
  EXPECT_EQ(VersionOf("one"), "2.0");
  std::filesystem::rename(path_ + ".backup", path_);
  EXPECT_EQ(VersionOf("one"), "1.0");
  {
    const TemporaryHost other;
    EXPECT_EQ(VersionOf("one"), "none");
  }
  EXPECT_EQ(VersionOf("one"), "1.0");
}

TEST_F(SchemaStoreTest, MissingOrBrokenStoreNeverLooksEmpty) {
  KeepType("one", kAnySchema);
  ASSERT_NE(Get("one"), nullptr);

  const auto expectFailure = [](DBStore::ErrorKind kind) {
    DBStore::ClearLastError();
    EXPECT_THROW(Get("one"), std::runtime_error);
    EXPECT_EQ(DBStore::GetLastError().kind, kind);
    EXPECT_THROW(SchemaStore::GetCache()->GetTypes(), std::runtime_error);
  };
  std::filesystem::rename(path_, path_ + ".away");
  expectFailure(DBStore::ErrorKind::MISSING);
  std::ofstream(path_) << "this is no database, only a text that is long enough to be read as one";
  expectFailure(DBStore::ErrorKind::CORRUPT);
  std::filesystem::rename(path_ + ".away", path_);
  EXPECT_EQ(VersionOf("one"), "1.0");
}

// A child has none of the other threads, but a copy of every lock that they held.
TEST_F(SchemaStoreTest, ThreadsAndChildrenReadTypesWhileTheyChange) {
  const auto keep = [](int version) {
    KeepType("one", R"({"properties":{"part":{"properties":{"a":{"default":1}}}}})",
             std::to_string(version));
  };
  int version = 1;
  keep(version);
  KeepType("two", kAnySchema, "1");
  const auto cache = SchemaStore::GetCache();
  const auto isKept = [&](const std::string& key) {
    const auto type = cache->GetSchemaObject("tarn", "test", key);
    return type && type->GetKey() == key && type->GetVersion() == "1";
  };
  const auto areKept = [&] {
    bool kept = true;
    for (int i = 0; i < 500 && kept; ++i) {
      kept = isKept(i % 3 == 0 ? "one" : "two");
    }
    return kept;
  };
  const auto isWhole = [&] {
    const auto type = Get("one");
    return type && type->GetPropertySchema("part")->GetDefaults() &&
           VersionOf("absent") == "none" && areKept();
  };
  ASSERT_TRUE(isWhole());
  // After the schema store: the handlers of a fork run in the order opposite to that of the first
  // uses.
  ASSERT_NE(DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true), nullptr);
  std::atomic<bool> stop = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      while (!stop) {
        ASSERT_TRUE(isWhole());
      }
    });
  }
  threads.emplace_back([&] {
    while (!stop) {
      keep(++version);
      // Readers get no turn beside a writer that never rests.
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  for (int i = 0; i < 20 && TestSupport::kAllocatorForks; ++i) {
    EXPECT_EQ(InChild([&] {
                alarm(20);
                return isWhole() ? 0 : 1;
              }),
              0);
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(VersionOf("one"), std::to_string(version));
}

// Closing any other descriptor of a file drops the locks that the process holds on it.
TEST_F(SchemaStoreTest, IsWatchedWithoutDroppingAnybodysLocksAndUntilItIsReplaced) {
  const int file = open(path_.c_str(), O_RDWR | O_CLOEXEC);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  ASSERT_EQ(fcntl(file, F_SETLK, &lock), 0);
  { const FileWatch gone(path_); }
  EXPECT_EQ(
      InChild([&] { return fcntl(file, F_GETLK, &lock) == 0 && lock.l_type == F_WRLCK ? 0 : 1; }),
      0)
      << "the lock is gone";
  close(file);

  const FileWatch watch(path_);
  const FileStamp before = watch.Stamp();
  EXPECT_EQ(before, StampOf(path_));
  std::filesystem::copy_file(path_, path_ + ".copy");
  std::filesystem::rename(path_ + ".copy", path_);
  EXPECT_NE(watch.Stamp(), before);
}

}  // namespace
}  // namespace TarnSchemaStore
