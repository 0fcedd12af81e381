// Restoring both stores: over what is there, at once for everybody, and both or neither.
#include "db/backed_up_host.h"
#include "support/database.h"
#include "support/sanitized.h"

#include <gmock/gmock.h>

#include <atomic>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace TestSupport;
using DBStore::ErrorKind;
using testing::HasSubstr;
namespace fs = std::filesystem;

class Restores : public BackedUpHost {
 protected:
  // The stores can be used, and are in one of both states.
  void ExpectBeforeOrAfter() {
    const std::string state = Look();
    EXPECT_TRUE(state == kFirst || state == kSecond) << state;
    EXPECT_FALSE(fs::exists(pending_));
    EXPECT_EQ(Database(host_).Run("PRAGMA integrity_check").front(), "ok");
  }
};

// The versions of the rows and of the type, as who keeps everything open sees them.
std::string LookThrough(const DBStore::ConnectionHandle& connection) {
  const auto type =
      TarnSchemaStore::SchemaStore::GetStore(true)->GetSchemaObject("tarn", "test", "t");
  return Query(connection, "SELECT DISTINCT Version FROM Config") + " " +
         (type ? type->GetVersion() : "-");
}

TEST_F(Restores, AreSeenByEverybodyWhoHasTheStoresOpen) {
  const auto connection = Connect();
  const auto open = [&] {
    const auto mine = Connect();
    for (std::string seen; seen != "1.0 1.0";) {
      // Rows that stay the same while the type is looked up belong to the type's moment.
      const std::string rows = Query(mine, "SELECT DISTINCT Version FROM Config");
      seen = LookThrough(mine);
      if (seen.substr(0, 3) == rows && seen != "1.0 1.0" && seen != "2.0 2.0") {
        std::fprintf(stderr, "seen: %s\n", seen.c_str());
        return 1;
      }
    }
    return DBStore::WriteKeyValue("child", "wrote", mine);
  };
  // As fast as it goes, and with time to look between the steps.
  for (const int pause : {0, 0, 0, 0, 30}) {
    ASSERT_TRUE(SetState(2));
    ChildProcess child(open);
    ChildProcess another(open);
    // A file that was written so long ago is looked at once in a tick only.
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    ASSERT_EQ(LookThrough(connection), "2.0 2.0");
    DBStore::testing::SetHook([=](auto, std::string_view step) {
      if (step == "completing" || step == "opening the stores" || step == "ending the restore") {
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
      }
      return 0;
    });
    const HostBackup::Restored restored = HostBackup::Restore(backup_, true);
    EXPECT_EQ(LookThrough(connection), "1.0 1.0");
    EXPECT_THAT(restored.replaced, testing::ElementsAre(store_, schemaStore_));
    EXPECT_THAT(restored.created, testing::IsEmpty());
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(another.Wait(), 0);
    EXPECT_EQ(ReadKey(connection, "child"), "wrote");
  }
}

// Who keeps types in memory compares it.
TEST_F(Restores, CountAsAChangeOfTheTypes) {
  const auto connection = Connect();
  const auto generation = [&] {
    DBStore::AttachSchemaStore(connection);
    const long value = std::stol(Query(connection, "SELECT Value FROM ss.Generation"));
    DBStore::DetachSchemaStore(connection);
    return value;
  };
  for (long before = generation(), i = 0; i < 3; ++i) {
    HostBackup::Restore(backup_, true);
    const long after = generation();
    EXPECT_GT(after, before);
    before = after;
  }
}

TEST_F(Restores, MendEverythingThatTheStoresSayIsMendedByABackup) {
  const auto write = [](const std::string& path, std::streamoff place, const std::string& text) {
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(place) << text;
  };
  const std::function<void(const std::string&)> damages[] = {
      [](const std::string& path) { fs::remove(path); },
      [](const std::string& path) { fs::resize_file(path, 0); },
      [](const std::string& path) { fs::resize_file(path, 5000); },
      [](const std::string& path) { WriteFile(path, std::string(50000, 'x')); },
      [&](const std::string& path) { write(path, 0, std::string(50, 'x')); },
      [&](const std::string& path) { write(path, 105, std::string(8000, 'x')); },
      [&](const std::string& path) { write(path, 60, std::string(4, '\0')); },
      [](const std::string& path) {
        for (const char* suffix : {"-wal", "-shm", "-journal"}) {
          fs::remove(path + suffix);
        }
        WriteFile(path, std::string(50000, 'x'));
      },
      [&](const std::string&) { fs::remove_all(fs::path(store_).parent_path()); }};
  int number = 0;
  for (const auto& damage : damages) {
    for (const std::string& path : {store_, schemaStore_}) {
      SCOPED_TRACE(path + std::to_string(number));
      ASSERT_TRUE(SetState(2));
      // In another process: closing a file of this one would drop its locks.
      // It dies with a write-ahead log that nobody has brought into the database.
      InChild([&] {
        SetState(2);
        damage(path);
        return 0;
      });
      EXPECT_EQ(Restoring(backup_), "nothing");
      EXPECT_EQ(Look(), kFirst);
      ExpectBeforeOrAfter();
    }
    ++number;
  }
}

TEST_F(Restores, MendWhatThisProcessHadOpen) {
  const std::string command = "rm -f " + store_ + "-*; head -c 50000 /dev/zero >" + store_;
  ASSERT_TRUE(SetState(2));
  ASSERT_EQ(std::system(command.c_str()), 0);  // which is no fork to the library
  EXPECT_EQ(Restoring(backup_), "nothing");
  EXPECT_EQ(Look(), kFirst);
}

TEST_F(Restores, TakeTheSizeOfPagesFromTheBackup) {
  InChild([&] {
    Database(host_).Run("PRAGMA journal_mode=DELETE; PRAGMA page_size=8192; VACUUM");
    return 0;
  });
  ASSERT_EQ(Query(Connect(), "PRAGMA page_size"), "8192");
  EXPECT_EQ(Restoring(backup_), "nothing");
  EXPECT_EQ(Look(), kFirst);
}

TEST_F(Restores, LeaveEverythingAloneWhereTheyMayNotWriteOrOthersDo) {
  const auto writer = Connect();
  const auto expect = [&](ErrorKind kind, const char* reason) {
    EXPECT_THAT(Restoring(backup_), HasSubstr(reason));
    EXPECT_EQ(DBStore::GetLastError().kind, kind);
    EXPECT_FALSE(fs::exists(pending_));
  };
  ASSERT_EQ(DBStore::BeginTransaction(writer), 0);
  expect(ErrorKind::BUSY, "wait for itself");
  std::thread([&] { expect(ErrorKind::BUSY, "locked"); }).join();
  EXPECT_EQ(DBStore::CommitTransaction(writer), 0);
  const std::string begun = host_.Root() + "/begun";
  ChildProcess other([&] {
    const auto connection = Connect();
    DBStore::BeginTransaction(connection);
    WriteFile(begun, "");
    return pause();
  });
  while (!fs::exists(begun)) {
    std::this_thread::yield();
  }
  expect(ErrorKind::BUSY, "current-store-1: locking");
  kill(other.Id(), SIGKILL);
  other.Wait();
  {
    const TypeFiles::TypeWriter types;
    expect(ErrorKind::BUSY, "schema-store-1: locking");
  }
  fs::permissions(host_.Root(), fs::perms{0755});
  fs::permissions(backup_, fs::perms{0644});
  EXPECT_EQ(AsPlainUser([&] {
              expect(ErrorKind::PERMISSION, "user");
              return HasFailure() ? 1 : 0;
            }),
            0);
  const auto inTheWay = [&](ErrorKind kind, const char* reason, const std::function<void()>& put) {
    InChild([&] {
      fs::rename(store_, store_ + "-away");
      put();
      return 0;
    });
    expect(kind, reason);
    fs::rename(store_ + "-away", store_);
  };
  inTheWay(ErrorKind::CORRUPT, "symbolic link", [&] { fs::create_symlink(backup_, store_); });
  inTheWay(ErrorKind::CORRUPT, "special file", [&] { mkfifo(store_.c_str(), 0600); });
  EXPECT_EQ(Look(), kSecond);
  inTheWay(ErrorKind::OTHER, "something else", [&] {
    fs::remove(store_ + "-wal");
    fs::copy_file(schemaStore_, store_);
  });
}

TEST_F(Restores, KilledAtAnyStepLeaveBeforeOrAfterToWhoOpensNext) {
  const auto open = Connect();
  bool completed = false;
  const int steps = KillAtEachStep([&] { HostBackup::Restore(backup_, true); },
                                   [&](bool killed) {
                                     const bool begun = fs::exists(pending_);
                                     completed = completed || begun;
                                     // Who has the store open completes it, too.
                                     const std::string version = begun || !killed ? "1.0" : "2.0";
                                     EXPECT_EQ(DBStore::WriteKeyValue("key", version, open), 0);
                                     EXPECT_EQ(ReadKey(Connect(), "key"), version);
                                     EXPECT_FALSE(fs::exists(pending_));
                                     EXPECT_EQ(Look(), begun || !killed ? kFirst : kSecond);
                                     ExpectBeforeOrAfter();
                                     EXPECT_TRUE(SetState(2));
                                   });
  EXPECT_GE(steps, 10);
  EXPECT_TRUE(completed);
}

TEST_F(Restores, KilledAtAnyStepOfACompletionAreCompletedByTheNext) {
  const auto begin = [&] {
    InChild([&] {
      DBStore::testing::SetHook([](auto, std::string_view step) {
        return step == "opening the stores" ? raise(SIGKILL) : 0;
      });
      HostBackup::Restore(backup_, true);
      return 0;
    });
    EXPECT_TRUE(fs::exists(pending_));
  };
  begin();
  KillAtEachStep([] { Look(); },
                 [&](bool killed) {
                   EXPECT_EQ(Look(), kFirst);
                   EXPECT_TRUE(SetState(2));
                   if (killed) {
                     begin();
                   }
                 });
}

TEST_F(Restores, KilledWhereThereWasNoStoreLeaveNoneOrBoth) {
  const std::string directory = fs::path(store_).parent_path();
  KillAtEachStep(
      [&] {
        fs::remove_all(directory);
        HostBackup::Restore(backup_, false);
      },
      [&](bool) {
        // Making the stores does not take the place of what was begun.
        const bool begun = fs::exists(pending_) || fs::exists(store_);
        if (begun) {
          EXPECT_TRUE(HostSetup::Initialize().ok);
          EXPECT_EQ(Look(), kFirst);
        } else {
          EXPECT_THAT(Look(), HasSubstr("no such database"));
        }
      });
}

TEST_F(Restores, ThatFailAtAnyStepLeaveBeforeOrAreToldToBeUnfinished) {
  bool reached = true;
  for (int step = 0; reached; ++step) {
    for (const int status : {13, 10}) {
      SCOPED_TRACE(step);
      AtStep(step, reached, [=] { return status; });
      const std::string failure = Restoring(backup_);
      DBStore::testing::SetHook(nullptr);
      EXPECT_EQ(failure == "nothing", !reached);
      const bool begun = failure.find("is not complete") != std::string::npos;
      EXPECT_EQ(fs::exists(pending_), begun) << failure;
      EXPECT_EQ(Look(), begun || !reached ? kFirst : kSecond) << failure;
      ExpectBeforeOrAfter();
      ASSERT_TRUE(SetState(2));
    }
  }
}

TEST_F(Restores, WaitForProcessesThatInstallAndWriteAndHoldThemUpNoLonger) {
  const std::string ends = host_.Root() + "/ends";
  ChildProcess child([&] {
    while (!fs::exists(ends)) {
      if (!SetState(2) || DBStore::WriteKeyValue("key", "", Connect()) != 0) {
        std::fprintf(stderr, "child: %s\n", DBStore::GetLastError().message.c_str());
        return 1;
      }
    }
    return 0;
  });
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(Restoring(backup_), "nothing");
  }
  WriteFile(ends, "");
  EXPECT_EQ(child.Wait(), 0);
  ExpectBeforeOrAfter();
}

TEST_F(Restores, LetChildrenThatAreForkedMeanwhileUseTheStores) {
  if (!kAllocatorForks) {
    GTEST_SKIP();
  }
  HostBackup::Restore(backup_, true);
  std::atomic<bool> ends = false;
  std::thread restoring([&] {
    while (!ends) {
      HostBackup::Restore(backup_, true);
      HostBackup::Backup(host_.Root() + "/another", true);
    }
  });
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(InChild([] { return Look() == kFirst ? 0 : 1; }), 0);
  }
  ends = true;
  restoring.join();
}

TEST_F(Restores, LeftUnfinishedHoldUpWhoMayNotCompleteThem) {
  InChild([&] {
    DBStore::testing::SetHook(
        [](auto, std::string_view step) { return step == "completing" ? raise(SIGKILL) : 0; });
    HostBackup::Restore(backup_, true);
    return 0;
  });
  fs::permissions(host_.Root(), fs::perms{0755});
  EXPECT_EQ(AsPlainUser([&] {
              EXPECT_EQ(Connect(), nullptr);
              const DBStore::LastError& error = DBStore::GetLastError();
              EXPECT_EQ(error.kind, ErrorKind::PERMISSION);
              EXPECT_THAT(error.message, HasSubstr("is not complete"));
              return HasFailure() ? 1 : 0;
            }),
            0);
  // What is damaged is not taken for a backup, and another one takes its place.
  InChild([&] {
    std::ofstream(pending_, std::ios::app) << "x";
    return 0;
  });
  EXPECT_THAT(Look(), HasSubstr("is damaged"));
  EXPECT_EQ(Restoring(backup_), "nothing");
  EXPECT_EQ(Look(), kFirst);
}

}  // namespace
