// What failures of the database layer are told with.
#include "db/lock_holder.h"
#include "db/statement_words.h"
#include "support/child_process.h"
#include "support/temporary_host.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/prctl.h>

namespace {

using namespace TestSupport;

TEST(Messages, NameWhoHasADatabaseLockedAsFarAsTheSystemTells) {
  const TemporaryHost host;
  const std::string store = host.Root() + "/store";
  struct Case {
    const char* suffix;  // of the file that is locked
    int command;
    short type;
    off_t place;
    std::string told;
  };
  const std::string nobody = "nobody is seen from here who has it locked now: try again";
  const std::string after = ": wait for that to end, or see what is being done there";
  const std::string writes = " has it locked for writing" + after;
  for (const Case& tried :
       {Case{"", F_SETLK, F_RDLCK, 0x40000002, "PROCESS reads it" + after},
        Case{"", F_SETLK, F_WRLCK, 0x40000001, "PROCESS" + writes},
        Case{"-shm", F_SETLK, F_WRLCK, 120, "PROCESS" + writes},
        Case{"-shm", F_OFD_SETLK, F_WRLCK, 120,
             "a process that is not to be seen from here" + writes},
        Case{"-shm", F_SETLK, F_RDLCK, 124, nobody}, Case{"-wal", F_SETLK, F_WRLCK, 120, nobody}}) {
    std::ofstream(store).put('x');
    const std::string path = store + tried.suffix;
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    ChildProcess holder([&] {
      prctl(PR_SET_NAME, "holder");
      struct flock lock {};
      lock.l_type = tried.type;
      lock.l_start = tried.place;
      lock.l_len = 1;
      const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
      return fcntl(file, tried.command, &lock) == 0 && write(ready[1], "x", 1) == 1 ? pause() : 1;
    });
    char signal = 0;
    close(ready[1]);
    EXPECT_EQ(read(ready[0], &signal, 1), 1);
    close(ready[0]);
    std::string expected = tried.told;
    if (expected.starts_with("PROCESS")) {
      expected.replace(0, 7, "process " + std::to_string(holder.Id()) + " (holder)");
    }
    EXPECT_EQ(DBStore::internal::WhoLocksDatabase(store), expected) << path;
    kill(holder.Id(), SIGKILL);
    holder.Wait();
  }
}

TEST(Messages, SayOfAStatementWhatItDoesAndNotItsText) {
  std::string told;
  for (const char* sql :
       {"INSERT OR REPLACE INTO \"Config\" (Name) VALUES (?)", "DELETE FROM 'KeyValue'",
        "\n SELECT a,b FROM(Config) WHERE x", "UPDATE Config SET a=1", "WITH x", "PRAGMA a", ""}) {
    const DBStore::internal::StatementWords words(sql);
    told.append(words.does).append(words.table).append("|");
  }
  EXPECT_EQ(told,
            "a write to Config|a deletion from KeyValue|a read of Config|a change of Config|"
            "a read of |a statement|a statement|");
}

}  // namespace
