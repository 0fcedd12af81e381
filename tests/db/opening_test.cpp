// What is told about a store that cannot be opened or written.
#include "db/database.h"
#include "support/database.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>

namespace {

using namespace TestSupport;
using DBStore::BeginTransaction;
using DBStore::ErrorKind;
using DBStore::WriteKeyValue;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

class Opening : public testing::Test {
 protected:
  Opening() { Permit(host_.Root(), 0755); }

  static void Permit(const fs::path& path, unsigned mode) {
    fs::permissions(path, fs::perms{mode});
  }
  void PermitStore(mode_t mode) {
    for (const char* suffix : {"", "-wal", "-shm"}) {
      Permit(store_ + suffix, mode);
    }
  }
  // The last failure is of a kind, about the store, and says this.
  static void ExpectTold(ErrorKind kind, const std::string& reason) {
    const DBStore::LastError error = DBStore::GetLastError();
    EXPECT_EQ(error.kind, kind);
    EXPECT_NE(error.code, 0);
    EXPECT_THAT(error.message, AllOf(StartsWith(HostPaths::kStore), HasSubstr(reason)));
    DBStore::ClearLastError();
  }
  static void ExpectRefused(ErrorKind kind, const std::string& reason) {
    DBStore::ClearLastError();
    EXPECT_EQ(Connect(), nullptr);
    ExpectTold(kind, reason);
  }
  static void OfPlainUser(const std::function<void()>& checks) {
    EXPECT_EQ(AsPlainUser([&checks] {
                checks();
                return HasFailure() ? 1 : 0;
              }),
              0);
  }

  TemporaryHost host_;
  const std::string store_ = host_.Path(HostPaths::kStore);
  const std::string directory_ = fs::path(store_).parent_path();
};

TEST_F(Opening, TellsAMissingStoreAndMakesNone) {
  fs::remove(store_);
  ExpectRefused(ErrorKind::MISSING, "tarnctl init");
  EXPECT_FALSE(fs::exists(store_));
  fs::remove_all(directory_);
  ExpectRefused(ErrorKind::MISSING, "tarnctl init");
  EXPECT_FALSE(fs::exists(directory_));
}

TEST_F(Opening, TellsWhatIsNoDatabase) {
  const std::string types = host_.Path(HostPaths::kSchemaStore);
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"is a directory", [&] { fs::create_directory(store_); }},
      {"is a symbolic link", [&] { fs::create_symlink(types, store_); }},
      {"is a special file", [&] { mkfifo(store_.c_str(), 0600); }},
      {"is empty", [&] { std::ofstream(store_).flush(); }},
      {"not a database", [&] { std::ofstream(store_) << std::string(100000, 'x'); }},
      {"is a database of something else", [&] { fs::copy_file(types, store_); }}};
  for (const auto& [reason, make] : cases) {
    fs::remove(store_);
    make();
    ExpectRefused(ErrorKind::CORRUPT, reason);
  }
}

TEST_F(Opening, TellsATruncatedStoreAtEveryLength) {
  const auto whole = fs::file_size(store_);
  for (const std::uintmax_t length : {whole - 4096, whole / 2, 4096UL, 1000UL, 100UL, 7UL}) {
    SCOPED_TRACE(length);
    fs::resize_file(store_, length);
    ExpectRefused(ErrorKind::CORRUPT, "backup");
  }
}

TEST_F(Opening, TellsANewerLayoutFromAnUnfinishedOne) {
  Database(host_).Run("PRAGMA user_version=3");
  ExpectRefused(ErrorKind::NEWER, "upgrade the library");
  Database(host_).Run("PRAGMA user_version=0");
  ExpectRefused(ErrorKind::CORRUPT, "layout version 0");
}

TEST_F(Opening, RestoresTheJournalModeAndFollowsALinkToTheDirectory) {
  Database(host_).Run("PRAGMA journal_mode=DELETE");
  EXPECT_EQ(Query(Connect(), "PRAGMA journal_mode"), "wal");
  fs::rename(directory_, host_.Root() + "/elsewhere");
  fs::create_symlink(host_.Root() + "/elsewhere", directory_);
  EXPECT_EQ(WriteKeyValue("key", "value", Connect()), 0);
}

TEST_F(Opening, TellsWhichRightToReadIsMissing) {
  Permit(store_, 0);
  OfPlainUser([] { ExpectRefused(ErrorKind::PERMISSION, "lacks the right to read it"); });
  Permit(directory_, 0);
  OfPlainUser([] { ExpectRefused(ErrorKind::PERMISSION, "lacks the right to search"); });
  Permit(directory_, 0755);
}

TEST_F(Opening, AUserWhoMayOnlyReadReadsAndFailsAtOnceToWrite) {
  ASSERT_EQ(WriteKeyValue("key", "value", Connect()), 0);
  PermitStore(0444);
  Permit(directory_, 0555);
  OfPlainUser([] {
    const auto start = std::chrono::steady_clock::now();
    const auto connection = Connect();
    const auto told = [] { ExpectTold(ErrorKind::PERMISSION, "lacks the right to write it"); };
    EXPECT_EQ(ReadKey(connection, "key"), "value");
    EXPECT_EQ(WriteKeyValue("key", "new", connection), 8);
    told();
    EXPECT_EQ(BeginTransaction(connection), 8);
    told();
    EXPECT_EQ(Execute(connection, "DELETE FROM KeyValue"), 1);
    told();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  });
  PermitStore(0666);
  OfPlainUser([] { EXPECT_EQ(WriteKeyValue("key", "new", Connect()), 0); });
  EXPECT_EQ(ReadKey(Connect(), "key"), "new") << "writing takes no right on the directory";
  Permit(directory_, 0755);
}

// The system's open(2), but that files are not to be written for as long as this says so.
bool refusesToWrite = false;
int Open(const char* path, int flags, int mode) {
  if (refusesToWrite && (flags & O_ACCMODE) != O_RDONLY) {
    errno = EROFS;
    return -1;
  }
  return open(path, flags, mode);
}

TEST_F(Opening, WhatCannotBeOpenedForWritingByMischanceIsNotOpenedForReading) {
  sqlite3_vfs* const files = sqlite3_vfs_find(nullptr);
  files->xSetSystemCall(files, "open", reinterpret_cast<sqlite3_syscall_ptr>(Open));
  const auto told = [] {
    ExpectTold(ErrorKind::OTHER, "cannot be opened for writing, although its rights allow it");
  };
  auto held = Connect();
  ASSERT_EQ(Execute(held, "PRAGMA query_only=ON"), 0);
  EXPECT_EQ(WriteKey(held, "key"), 8);
  refusesToWrite = true;
  EXPECT_NE(BeginTransaction(held), 0);  // it is opened anew, in vain
  told();
  EXPECT_EQ(CancelTransaction(held), 21);
  EXPECT_EQ(Connect(), nullptr);
  told();
  refusesToWrite = false;
  EXPECT_EQ(WriteKey(held, "key"), 0) << "it goes on trying";
  files->xSetSystemCall(files, "open", nullptr);
  EXPECT_EQ(WriteKey(Connect(), "key"), 0);
}

TEST_F(Opening, WhoMetAReadOnlyErrorOrGotOtherRightsOpensAnew) {
  const auto opens = [] { return DBStore::testing::GetCounters().opens; };
  auto connection = Connect();
  ASSERT_EQ(Execute(connection, "PRAGMA query_only=ON"), 0);  // SQLite's own 8
  EXPECT_EQ(WriteKey(connection, "key"), 8);
  EXPECT_EQ(WriteKey(connection, "key"), 0) << "also who goes on holding it";
  EXPECT_EQ(BeginTransaction(connection), 0);
  ASSERT_EQ(Execute(connection, "PRAGMA query_only=ON"), 0);
  EXPECT_EQ(WriteKey(connection, "key"), 8);
  EXPECT_EQ(WriteKey(connection, "key"), 8) << "not in the middle of something";
  EXPECT_EQ(CancelTransaction(connection), 0);
  connection.reset();
  EXPECT_EQ(WriteKey(Connect(), "key"), 0);
  PermitStore(0644);
  EXPECT_EQ(InChild([&] {
              if (geteuid() != 0 || seteuid(65534) != 0) {
                return 77;
              }
              EXPECT_EQ(WriteKey(Connect(), "key"), 8);
              const auto before = opens();
              EXPECT_EQ(WriteKey(Connect(), "key"), 8);
              EXPECT_EQ(opens(), before) << "the same right is missing";
              EXPECT_EQ(seteuid(0), 0);
              EXPECT_EQ(WriteKey(Connect(), "key"), 0);
              return HasFailure() ? 1 : 0;
            }) % 77,
            0);
}

TEST_F(Opening, TellsReadersThatTheLogIsGoneAndWhoMendsIt) {
  PermitStore(0444);
  fs::remove(store_ + "-wal");
  fs::remove(store_ + "-shm");
  Permit(directory_, 0555);
  OfPlainUser(
      [] { ExpectRefused(ErrorKind::PERMISSION, "before a user who may write it has opened it"); });
  Permit(directory_, 0755);
}

}  // namespace
