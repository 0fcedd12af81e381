// Writing both stores into one file, and refusing files that are not what was written.
#include "db/backed_up_host.h"

#include <gmock/gmock.h>

#include <atomic>
#include <numeric>
#include <set>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace TestSupport;
using DBStore::ErrorKind;
using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Backups : public BackedUpHost {
 protected:
  static std::string Writing(const std::string& path, bool replace = false) {
    return Failure([&] { HostBackup::Backup(path, replace); });
  }
};

TEST_F(Backups, TellWhatTheyHoldAndAreForTheirOwnerAlone) {
  const mode_t mask = umask(0);
  const HostBackup::Written written = HostBackup::Backup(backup_, true);
  umask(mask);
  EXPECT_EQ(written.bytes, fs::file_size(backup_));
  EXPECT_EQ(written.content.objects, 40U);
  EXPECT_EQ(written.content.types, 1U);
  EXPECT_EQ(written.content.storeLayout, 2);
  EXPECT_EQ(static_cast<unsigned>(fs::status(backup_).permissions()), 0600U);

  const TemporaryHost other(TemporaryHost::Content::NOTHING);
  const HostBackup::Restored restored = HostBackup::Restore(backup_, false);
  EXPECT_EQ(Look(), kSecond);
  EXPECT_THAT(restored.created, testing::ElementsAre(other.Path("/etc"), other.Path("/etc/kestrel"),
                                                     other.Path("/etc/kestrel/configstore"),
                                                     other.Path(HostPaths::kStore),
                                                     other.Path(HostPaths::kSchemaStore)));
  EXPECT_EQ(static_cast<unsigned>(fs::status(other.Path(HostPaths::kStore)).permissions()), 0640U);
}

// Two processes install types with rows, and two write pairs of rows, as fast as they can.
TEST_F(Backups, AreOfOneMomentWhileProcessesInstallAndWrite) {
  auto* const ends = static_cast<std::atomic<bool>*>(
      mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  std::vector<std::unique_ptr<ChildProcess>> children;
  children.reserve(4);
  for (int child = 0; child < 4; ++child) {
    children.push_back(std::make_unique<ChildProcess>([=] {
      int done = 0;
      for (int i = 0; !ends->load(); ++i) {
        const auto store = Connect();
        const std::string number = std::to_string(i);
        const auto name = [child](const char* which) { return which + std::to_string(child); };
        done += child < 2 ? SetState(2 * i + child + 1)
                          : DBStore::BeginTransaction(store) == 0 &&
                                DBStore::WriteKeyValue(name("a"), number, store) == 0 &&
                                DBStore::WriteKeyValue(name("b"), number, store) == 0 &&
                                DBStore::CommitTransaction(store) == 0;
      }
      return done > 0 ? 0 : 1;
    }));
  }
  std::set<std::string> seen;
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(Writing(backup_, true), "nothing");
    const TemporaryHost other(TemporaryHost::Content::NOTHING);
    HostBackup::Restore(backup_, false);
    const std::string state = Look();
    EXPECT_EQ(state.substr(0, state.find(' ')), state.substr(state.rfind(' ') + 1)) << state;
    EXPECT_THAT(state, HasSubstr(" 40 | "));
    for (const char* child : {"2", "3"}) {
      EXPECT_EQ(ReadKey(Connect(), std::string("a") + child),
                ReadKey(Connect(), std::string("b") + child));
    }
    seen.insert(state);
  }
  ends->store(true);
  for (const auto& child : children) {
    EXPECT_EQ(child->Wait(), 0);
  }
  EXPECT_GT(seen.size(), 1U) << "nobody wrote";
  munmap(ends, 4096);
}

TEST_F(Backups, LeaveAloneWhatIsInTheWay) {
  const std::string before = ReadFile(backup_);
  const std::string link = host_.Root() + "/link";
  const std::string pipe = host_.Root() + "/pipe";
  fs::create_symlink(backup_, link);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string directory = fs::path(store_).parent_path();
  // What is said of a place that a backup is to be written to, and of one that it is to be read from.
  const std::tuple<std::string, const char*, const char*> cases[] = {
      {link, "is a symbolic link", nullptr},
      {pipe, "is a special file", "is a special file"},
      {host_.Root(), "is a directory", "is a directory"},
      {host_.Root() + "/", "not the name of a file", nullptr},
      {host_.Root() + "/none/x", "No such file", "No such file"},
      {"", "not the name of a file", nullptr},
      {store_, "directory of the stores", "file of the stores"},
      {store_ + "-shm", nullptr, "file of the stores"},
      {schemaStore_, nullptr, "file of the stores"},
      {directory + "/x", "directory of the stores", nullptr}};
  const auto reader = Connect();
  const std::size_t files = CountFiles(host_.Root()) + CountFiles(directory);
  for (const auto& [path, written, read] : cases) {
    EXPECT_TRUE(written == nullptr || Writing(path, true).find(written) != std::string::npos)
        << path;
    EXPECT_TRUE(
        read == nullptr ||
        ::testing::Value(Restoring(path), testing::AllOf(StartsWith(path + ": "), HasSubstr(read))))
        << path;
  }
  EXPECT_THAT(Restoring(backup_, false), HasSubstr("has to be forced"));
  EXPECT_THAT(Writing(backup_), HasSubstr("exists"));
  EXPECT_EQ(ReadFile(backup_), before);
  EXPECT_EQ(CountFiles(host_.Root()) + CountFiles(directory), files);
  EXPECT_EQ(Look(), kSecond);
}

TEST_F(Backups, ThatCannotBeWrittenLeaveNoFileAndTheOldOne) {
  const std::string before = ReadFile(backup_);
  const std::size_t files = CountFiles(host_.Root());
  for (const rlim_t room :
       {rlim_t{0}, rlim_t{5000}, rlim_t{before.size() / 2}, rlim_t{before.size() - 1}}) {
    EXPECT_EQ(InChild([&] {
                signal(SIGXFSZ, SIG_IGN);
                const rlimit limit = {room, room};
                setrlimit(RLIMIT_FSIZE, &limit);
                return Writing(backup_, true) != "nothing" ? 0 : 1;
              }),
              0)
        << room;
    EXPECT_EQ(CountFiles(host_.Root()), files);
    EXPECT_TRUE(ReadFile(backup_) == before);
  }
  bool reached = true;
  for (int step = 0; reached; ++step) {
    AtStep(step, reached, [] { return 13; });
    EXPECT_EQ(Writing(backup_, true) != "nothing", reached) << step;
    EXPECT_EQ(CountFiles(host_.Root()), files);
    EXPECT_EQ(ReadFile(backup_) == before, reached);
  }
  DBStore::testing::SetHook(nullptr);
  HostBackup::Restore(backup_, true);
  EXPECT_EQ(Look(), kSecond);

  fs::permissions(host_.Root(), fs::perms{0755});
  EXPECT_EQ(AsPlainUser([&] {
              return Writing(backup_, true) != "nothing" &&
                             DBStore::GetLastError().kind == ErrorKind::PERMISSION
                         ? 0
                         : 1;
            }),
            0);
}

TEST_F(Backups, KilledAtAnyStepAreWholeOrTheOldOne) {
  const std::string before = ReadFile(backup_);
  const int steps = KillAtEachStep([&] { HostBackup::Backup(backup_, true); },
                                   [&](bool killed) {
                                     EXPECT_EQ(ReadFile(backup_) == before, killed);
                                     EXPECT_TRUE(SetState(2));  // no lock is left
                                   });
  EXPECT_GE(steps, 5);
}

TEST_F(Backups, OfADamagedStoreAreNotMade) {
  InChild([&] {
    std::fstream file(store_, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(20480) << std::string(3000, '\x7f');
    return 0;
  });
  EXPECT_THAT(Writing(host_.Root() + "/new"), HasSubstr("damaged"));
  EXPECT_EQ(DBStore::GetLastError().kind, ErrorKind::CORRUPT);
  EXPECT_FALSE(fs::exists(host_.Root() + "/new"));
}

TEST_F(Backups, AreRefusedWhereTheyWereCutOrAlteredAnywhere) {
  const std::string whole = ReadFile(backup_);
  const auto refuse = [&](const std::string& text, const char* reason) {
    WriteFile(backup_, text);
    EXPECT_THAT(Restoring(backup_), testing::AllOf(StartsWith(backup_ + ": "), HasSubstr(reason)));
  };
  for (const std::size_t length :
       {0UL, 1UL, 15UL, 16UL, 100UL, 4096UL, whole.size() / 2, whole.size() - 1}) {
    SCOPED_TRACE(length);
    refuse(whole.substr(0, length), length < 15 ? "not a backup" : "cut short");
  }
  refuse(whole + "x", "damaged");
  refuse(std::string(whole.size(), 'x'), "not a backup");
  // Every byte of the header that means something, and of the rest every region.
  std::vector<std::size_t> places(80);
  std::iota(places.begin(), places.end(), 0);
  for (std::size_t place = 100; place < whole.size(); place += 997) {
    places.push_back(place);
  }
  places.insert(places.end(), {whole.size() - 32, whole.size() - 1});
  for (const std::size_t place : places) {
    for (const char flip : {'\x01', '\x80'}) {
      SCOPED_TRACE(place);
      std::string altered = whole;
      altered[place] = static_cast<char>(altered[place] ^ flip);
      refuse(altered, "; ");
    }
  }
  EXPECT_EQ(Look(), kSecond);
  EXPECT_FALSE(fs::exists(pending_));
}

}  // namespace
