// What is told about a store that cannot be opened or written.
#include "db/database.h"

#include <sqlite3.h>

#include <chrono>
#include <sys/stat.h>

namespace {

using namespace TestSupport;
using DBStore::ErrorKind;
namespace fs = std::filesystem;

class Opening : public testing::Test {
 protected:
  Opening() { Permit(host_.Root(), 0755); }

  static void Permit(const std::string& path, mode_t mode) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }
  void PermitStore(mode_t mode) {
    for (const char* suffix : {"", "-wal", "-shm"}) {
      Permit(store_ + suffix, mode);
    }
  }
  void RunOutside(const char* sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(store_.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
  }
  void Overwrite(const std::string& content) {
    fs::remove(store_);
    std::ofstream(store_) << content;
  }

  // Whether the last failure is of a kind, about the store, and says this.
  static bool Told(ErrorKind kind, const std::string& reason) {
    const DBStore::LastError error = DBStore::GetLastError();
    DBStore::ClearLastError();
    const bool told = error.kind == kind && error.code != 0 &&
                      error.message.rfind(HostPaths::kStore, 0) == 0 &&
                      error.message.find(reason) != std::string::npos;
    if (!told) {
      std::fprintf(stderr, "kind %d: %s\n", static_cast<int>(error.kind), error.message.c_str());
    }
    return told;
  }
  static bool Refuses(ErrorKind kind, const std::string& reason) {
    DBStore::ClearLastError();
    return Connect() == nullptr && Told(kind, reason);
  }
  static bool RefusesWriting(const std::string& reason) {
    const auto start = std::chrono::steady_clock::now();
    const auto connection = Connect();
    const auto told = [&reason] { return Told(ErrorKind::PERMISSION, reason); };
    return ReadKey(connection, "key") == "value" &&
           DBStore::WriteKeyValue("key", "new", connection) == 8 && told() &&
           DBStore::BeginTransaction(connection) == 8 && told() &&
           Execute(connection, "DELETE FROM KeyValue") == 1 && told() &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(1);
  }
  static void ExpectOfPlainUser(const std::function<bool()>& check) {
    EXPECT_EQ(AsPlainUser([&check] { return check() ? 0 : 1; }), 0);
  }

  TemporaryHost host_;
  const std::string store_ = host_.Path(HostPaths::kStore);
  const std::string directory_ = fs::path(store_).parent_path();
};

TEST_F(Opening, TellsAMissingStoreAndMakesNone) {
  fs::remove(store_);
  EXPECT_TRUE(Refuses(ErrorKind::MISSING, "tarnctl init"));
  EXPECT_FALSE(fs::exists(store_));
  fs::remove_all(directory_);
  EXPECT_TRUE(Refuses(ErrorKind::MISSING, "tarnctl init"));
  EXPECT_FALSE(fs::exists(directory_));
}

TEST_F(Opening, TellsWhatIsNoDatabase) {
  fs::remove(store_);
  fs::create_directory(store_);
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "is a directory"));
  fs::remove(store_);
  fs::create_symlink(host_.Path(HostPaths::kSchemaStore), store_);
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "is a symbolic link"));
  fs::remove(store_);
  ASSERT_EQ(mkfifo(store_.c_str(), 0600), 0);
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "is a special file"));
  Overwrite("");
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "is empty"));
  Overwrite(std::string(100000, 'x'));
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "not a database"));
  fs::remove(store_);
  fs::copy_file(host_.Path(HostPaths::kSchemaStore), store_);
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "is a database of something else"));
}

TEST_F(Opening, TellsATruncatedStoreAtEveryLength) {
  const auto whole = fs::file_size(store_);
  for (const std::uintmax_t length :
       {whole - 4096, whole / 2, std::uintmax_t{4096}, std::uintmax_t{1000}, std::uintmax_t{100},
        std::uintmax_t{7}}) {
    fs::resize_file(store_, length);
    EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "backup")) << length;
  }
}

TEST_F(Opening, TellsANewerLayoutFromAnUnfinishedOne) {
  RunOutside("PRAGMA user_version=2");
  EXPECT_TRUE(Refuses(ErrorKind::NEWER, "upgrade the library"));
  RunOutside("PRAGMA user_version=0");
  EXPECT_TRUE(Refuses(ErrorKind::CORRUPT, "layout version 0"));
}

TEST_F(Opening, RestoresTheJournalModeAndFollowsALinkToTheDirectory) {
  RunOutside("PRAGMA journal_mode=DELETE");
  EXPECT_EQ(Query(Connect(), "PRAGMA journal_mode"), "wal");
  fs::rename(directory_, host_.Root() + "/elsewhere");
  fs::create_symlink(host_.Root() + "/elsewhere", directory_);
  EXPECT_EQ(DBStore::WriteKeyValue("key", "value", Connect()), 0);
}

TEST_F(Opening, TellsWhichRightToReadIsMissing) {
  Permit(store_, 0);
  ExpectOfPlainUser([] { return Refuses(ErrorKind::PERMISSION, "lacks the right to read it"); });
  Permit(directory_, 0);
  ExpectOfPlainUser([] { return Refuses(ErrorKind::PERMISSION, "lacks the right to search"); });
  Permit(directory_, 0755);
}

TEST_F(Opening, AUserWhoMayOnlyReadReadsAndFailsAtOnceToWrite) {
  ASSERT_EQ(DBStore::WriteKeyValue("key", "value", Connect()), 0);
  PermitStore(0444);
  Permit(directory_, 0555);
  ExpectOfPlainUser([] { return RefusesWriting("lacks the right to write it"); });
  PermitStore(0666);
  ExpectOfPlainUser([] { return DBStore::WriteKeyValue("key", "new", Connect()) == 0; });
  EXPECT_EQ(ReadKey(Connect(), "key"), "new") << "writing takes no right on the directory";
  Permit(directory_, 0755);
}

TEST_F(Opening, TellsReadersThatTheLogIsGoneAndWhoMendsIt) {
  PermitStore(0444);
  fs::remove(store_ + "-wal");
  fs::remove(store_ + "-shm");
  Permit(directory_, 0555);
  ExpectOfPlainUser([] {
    return Refuses(ErrorKind::PERMISSION, "before a user who may write it has opened it");
  });
  Permit(directory_, 0755);
}

}  // namespace
