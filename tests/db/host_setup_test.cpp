#include "platform/host_setup.h"

#include "db/database.h"

#include <gmock/gmock.h>

#include <signal.h>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace TestSupport;
using testing::ElementsAre;
namespace fs = std::filesystem;

class HostSetup : public testing::Test {
 protected:
  std::string ModesUnderRoot() {
    const std::string store = HostPaths::kStore;
    std::ostringstream modes;
    for (const std::string& path :
         {std::string("/etc"), std::string("/etc/kestrel"), std::string("/etc/kestrel/configstore"),
          store, store + "-wal", store + "-shm", std::string(HostPaths::kSchemaStore)}) {
      modes << std::oct << static_cast<int>(fs::status(host_.Path(path.c_str())).permissions())
            << " ";
    }
    return modes.str();
  }

  TemporaryHost host_{TemporaryHost::Content::NOTHING};
  const std::string store_ = host_.Path(HostPaths::kStore);
};

TEST_F(HostSetup, MakesWhatIsMissingOnceAndWithTheRightModes) {
  const mode_t mask = umask(077);
  const auto first = ::HostSetup::Initialize();
  umask(mask);
  EXPECT_TRUE(first.ok) << first.failure;
  EXPECT_THAT(first.created, ElementsAre(host_.Path("/etc"), host_.Path("/etc/kestrel"),
                                         host_.Path("/etc/kestrel/configstore"), store_,
                                         host_.Path(HostPaths::kSchemaStore)));
  EXPECT_EQ(ModesUnderRoot(), "755 755 755 640 640 640 640 ");

  ASSERT_EQ(DBStore::WriteKeyValue("key", "value", Connect()), 0);
  const auto second = ::HostSetup::Initialize();
  EXPECT_TRUE(second.ok);
  EXPECT_TRUE(second.created.empty());
  EXPECT_THAT(second.unchanged, ElementsAre(store_, host_.Path(HostPaths::kSchemaStore)));
  EXPECT_EQ(ReadKey(Connect(), "key"), "value");
}

TEST_F(HostSetup, NamesWhatIsInTheWayAndLeavesItAlone) {
  std::ofstream(host_.Path("/etc")).flush();
  EXPECT_THAT(::HostSetup::Initialize().failure, testing::StartsWith("/etc: "));
  fs::remove(host_.Path("/etc"));

  fs::create_directories(fs::path(store_).parent_path());
  std::ofstream(store_).flush();
  const auto result = ::HostSetup::Initialize();
  EXPECT_FALSE(result.ok);
  EXPECT_THAT(result.failure, testing::StartsWith(std::string(HostPaths::kStore) + ": is empty"));
  EXPECT_EQ(fs::file_size(store_), 0U);
  fs::remove_all(host_.Path("/etc"));

  ASSERT_EQ(chmod(host_.Root().c_str(), 0555), 0);
  EXPECT_EQ(AsPlainUser([] {
              const bool ok = ::HostSetup::Initialize().ok;
              return !ok && DBStore::GetLastError().kind == DBStore::ErrorKind::PERMISSION ? 0 : 1;
            }),
            0);
  ASSERT_EQ(chmod(host_.Root().c_str(), 0755), 0);
}

TEST_F(HostSetup, TwoProcessesAtOnceMakeOneStore) {
  const auto initialize = [] {
    const auto result = ::HostSetup::Initialize();
    return result.ok && result.created.size() + result.unchanged.size() >= 2 ? 0 : 1;
  };
  ChildProcess first(initialize);
  ChildProcess second(initialize);
  EXPECT_EQ(first.Wait(), 0);
  EXPECT_EQ(second.Wait(), 0);
  EXPECT_TRUE(Connect());
}

// Killed at many moments, an initialisation leaves a store that is whole or none, and the next one
// succeeds.
TEST_F(HostSetup, IsCompletedAfterItWasKilled) {
  for (int moment = 0; moment < 40; ++moment) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::HostSetup::Initialize();
      _exit(0);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(250 * moment));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (fs::exists(store_)) {
      EXPECT_EQ(Query(Connect(), "SELECT count(*) FROM Config, KeyValue"), "0");
    }
    const auto result = ::HostSetup::Initialize();
    EXPECT_TRUE(result.ok) << result.failure;
    EXPECT_FALSE(fs::exists(store_ + ".new"));
    fs::remove_all(host_.Path("/etc"));
  }
}

}  // namespace
