#include "notify/notification.h"

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/explain.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/taking_back.h"

#include "platform/db_testing.h"

#include "notify/allowlist.h"
#include "notify/listener.h"
#include "notify/uds_client.h"
#include "support/captured_log.h"
#include "support/child_process.h"
#include "support/raised.h"
#include "support/test_types.h"
#include "support/threads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <thread>

namespace TarnConfigStore {
namespace {

using namespace ::testing;
using namespace TestSupport;

constexpr const char* kSocket = "kslLocalSocketKeeldNotifyWisp";
constexpr const char* kSwitch = "NOTIFY_KEELD";

// The allowlist is the process's for good: whatever reads one runs in a child.
class NotificationTest : public ::testing::Test {
 protected:
  NotificationTest() {
    std::filesystem::current_path(host_.Root());
    std::filesystem::create_directories(std::filesystem::path(path_).parent_path());
    SetKeyValue(kSwitch, "true");
  }
  void Allow(const std::string& text) const { std::ofstream(path_) << text; }
  static void InChild(const std::function<void()>& test) {
    const int status = ::TestSupport::InChild([&test] {
      test();
      return HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(status, 0);
  }

  TemporaryHost host_;
  const std::string path_ = host_.Path(HostPaths::kNotifyAllowlist);
  const ConfigStoreObjectId resolver_{"resolver", "network", "tarn"};
};

// The names in the messages that wait at a socket, each with a blank.
std::string Announced(const Listener& listener) {
  std::string names;
  for (std::string message = listener.Receive(); !message.empty(); message = listener.Receive()) {
    const std::size_t start = message.find("identifiers\":[\"") + 15;
    names += message.substr(start, message.find("\"]", start) - start) + " ";
  }
  return names;
}

long OpenSockets() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::count_if(begin(descriptors), end(descriptors),
                       [](const auto& descriptor) { return is_socket(status(descriptor)); });
}

TEST_F(NotificationTest, SendsOneMessageToTheByte) {
  const auto message = [](const std::string& name) {
    const std::string body =
        R"({"method":"invoke","id":"9","params":{"serviceId":"com.kestrel.keeld.notifier",)"
        R"("operationId":"notify","input":{"STRUCTURE":{"operation-input":{"identifiers":[")" +
        name + R"("],"cartel_id":)" + std::to_string(getpid()) +
        R"(}}},"ctx":{"securityCtx":{"schemeId":)"
        R"("com.kestrel.rpc.scheme.no_authentication"}}},"jsonrpc":"2.0"})";
    return "POST /api HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nContent-Type: application/json\r\n\r\n" + body;
  };
  Allow(R"(["tarn.network.switches", "tarn.tkernel.*"])");
  InChild([&] {
    const Listener daemon(kSocket);
    NotifyIfAllowlisted({"switches", "network", "tarn", "edge/0"});
    EXPECT_EQ(daemon.Receive(), message("tarn.network.switches"));
    NotifyIfAllowlisted({"op\"tions\xC3\xA9", "tkernel", "tarn"});
    EXPECT_EQ(daemon.Receive(), message("tarn.tkernel.op\"tions\xC3\xA9"));
  });
}

TEST_F(NotificationTest, DocumentsAnnounceEachObjectThatTheyChange) {
  InstallType(host_, kPlainType);
  InstallType(host_, kSwitchType);
  Allow(R"(["tarn.test.plain", "tarn.test.switch"])");
  InChild([&] {
    const Listener daemon(kSocket);
    const std::string document = R"({"format":1,"config":{"tarn":{"test":{"plain":{"name":"x"},)"
                                 R"("switch":[{"name":"a","mtu":1},{"name":"b","mtu":2}]}}}})";
    ImportConfig(document, {.mode = ImportMode::REPLACE_NAMED, .check = true});
    ComputeDrift(document, {});
    EXPECT_EQ(Announced(daemon), "");
    ImportConfig(document, {.mode = ImportMode::REPLACE_NAMED});
    EXPECT_EQ(Announced(daemon), "tarn.test.plain tarn.test.switch tarn.test.switch ");
    std::string changed = document;
    changed.replace(changed.find("\"mtu\":2"), 7, "\"mtu\":3");
    ApplyConfig(changed, {});
    EXPECT_EQ(Announced(daemon), "tarn.test.switch ");
    EXPECT_EQ(Raised([&] {
                ApplyConfig(changed.replace(changed.find(":3"), 2, ":[]"), {});
              }).substr(0, 7),
              "VE 1091");
    EXPECT_EQ(Announced(daemon), "");
  });
}

TEST_F(NotificationTest, TakingBackAnnouncesWhatItChanged) {
  InstallType(host_, kPlainType);
  Allow(R"(["tarn.test.plain"])");
  InChild([&] {
    const Listener daemon(kSocket);
    const ConfigStoreObjectId plain("plain", "test", "tarn");
    ImportConfig(R"({"format":1,"config":{"tarn":{"test":{"plain":{"name":"x","port":9}}}}})", {});
    EXPECT_EQ(Announced(daemon), "tarn.test.plain ");
    UnsetMembers(plain, {"/tags"});
    ExplainObject(plain);
    Raised([&] { UnsetMembers(plain, {"/name"}); });
    EXPECT_EQ(Announced(daemon), "");
    UnsetMembers(plain, {"/port"});
    EXPECT_EQ(Announced(daemon), "tarn.test.plain ");
    ResetObject(plain, ResetTarget::DEFAULTS);
    ResetObject(plain, ResetTarget::DEFAULTS);
    EXPECT_EQ(Announced(daemon), "tarn.test.plain ");
  });
}

TEST_F(NotificationTest, FollowsSwitchAndAllowlist) {
  constexpr const char* kAll = R"(["tarn.network.resolver", "tarn.tkernel.*", "a.b.c"])";
  constexpr const char* kUnread = "allowlist.json";
  const struct {
    const char* flag;
    const char* allowlist;
    const char* announced;
    const char* failure = "";
  } cases[] = {
      {"true", kAll, "tarn.network.resolver tarn.tkernel.options "},
      {"true", R"(["tarn.network.*", "tarn.network.*"])",
       "tarn.network.resolver tarn.network.switches "},
      {"true", R"(["tarn.*", "*", "tarn", "tarn.network", "network.resolver", "tarn..*"])", ""},
      {"true", R"(["tarn.network.switches.edge/0", "tarn.network.res*", "TARN.tkernel.*"])", ""},
      {"TRUE", kAll, ""},
      {"", "no JSON", ""},
      {"true", "MISSING", "",
       "Notification allowlist /usr/lib/kestrel/configmanager/notify-list/allowlist.json missing."},
      {"true", "FIFO", "", kUnread},
      {"true", "", "", kUnread},
      {"true", "[\"tarn.network.resolver\",", "", kUnread},
      {"true", R"({"tarn.network.resolver": true})", "", "IsArray()"},
      {"true", R"(["tarn.network.resolver", 5])", "", "IsString()"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(std::string(row.flag) + " " + row.allowlist);
    std::filesystem::remove(path_);
    SetKeyValue(kSwitch, row.flag);
    if (row.allowlist == std::string("FIFO")) {
      ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    } else if (row.allowlist != std::string("MISSING")) {
      Allow(row.allowlist);
    }
    InChild([&] {
      const Listener daemon(kSocket);
      CapturedLog log;
      NotifyIfAllowlisted(resolver_);
      NotifyIfAllowlisted({"switches", "network", "tarn", "edge/0"});
      NotifyIfAllowlisted({"options", "tkernel", "tarn"});
      EXPECT_EQ(Announced(daemon), row.announced);
      const auto told = AllOf(StartsWith("1 Failed to read notify list: "), HasSubstr(row.failure),
                              EndsWith(". Defaulting to empty list."));
      EXPECT_THAT(log.Lines(), Contains(told).Times(*row.failure == '\0' ? 0 : 3));
      EXPECT_TRUE(*row.failure != '\0' || log.Lines().empty());
      EXPECT_EQ(row.failure == kUnread && *row.allowlist == '\0',
                ::testing::Value(log.Lines(), Contains(HasSubstr("The document is empty"))));
    });
  }
}

TEST_F(NotificationTest, ThreadsShareAFirstReadThatIsTriedAgainUntilItSucceedsAndNeverAfter) {
  constexpr int kThreads = 16;
  const std::string name = "tarn.network.resolver ";
  InChild([&] {
    const Listener daemon(kSocket);
    int failures = 0;  // under the lock of the log
    CSLogger::SetSink([&](int priority, const char*) {
      if (priority == 1 && ++failures == 3) {
        Allow(R"(["tarn.network.resolver"])");
      }
    });
    InThreads(kThreads, [&](int /*thread*/) { NotifyIfAllowlisted(resolver_); });
    CSLogger::SetSink(nullptr);
    EXPECT_GE(failures, 3);
    EXPECT_EQ(Announced(daemon).size(), (kThreads - static_cast<unsigned>(failures)) * name.size());
    Allow("no JSON any more");
    NotifyIfAllowlisted(resolver_);
    EXPECT_EQ(Announced(daemon), name);
  });
}

TEST_F(NotificationTest, AForkWaitsForTheReaderOfTheAllowlist) {
  InChild([&] {
    std::atomic<bool> reading{false};
    CSLogger::SetSink([&](int /*priority*/, const char* /*line*/) {
      reading = true;
      ::usleep(50000);
    });
    Allow("no JSON");
    // Detached: a child that is told of threads that it does not have is blamed for not joining them.
    std::thread([] { NotifyIfAllowlisted({"resolver", "network", "tarn"}); }).detach();
    while (!reading) {
    }
    Allow("[]");
    EXPECT_EQ(0, ::TestSupport::InChild([] {
                ::alarm(10);
                return static_cast<int>(GetNotifyAllowlist().size());
              }));
  });
}

TEST_F(NotificationTest, NoStateOfTheDaemonIsFeltByTheStore) {
  const std::string error =
      "2 Error while sending notification for config object 'comp tarn grp test key plain' to "
      "KeelD: Failed to connect socket: ";
  Allow(R"(["tarn.test.plain"])");
  InChild([&] {
    InstallType(host_, kPlainType);
    const auto store = ConfigStore::GetStore(sGlobalNamespace);
    const ConfigStoreObjectId plain{"plain", "test", "tarn"};
    std::int32_t revision = 0;
    // Changes an object, and returns what was logged of failures.
    const auto change = [&] {
      const CapturedLog log;
      const auto object = std::make_shared<ConfigStoreObject>(plain);
      object->SetValue("name", "x");
      store->Set(object, EXTERNAL);
      EXPECT_EQ(store->GetRevision(plain), ++revision);
      std::string told;
      for (const std::string& line : log.Lines()) {
        told += line[0] < '3' ? line : "";
      }
      return told;
    };
    const long before = OpenSockets();
    EXPECT_EQ(change(), error + "No such file or directory");
    {
      const Listener hanging(kSocket, 0);
      EXPECT_EQ(change(), "");
      // Nobody waits twice for a daemon that hangs.
      const auto start = std::chrono::steady_clock::now();
      for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(change(), error + "Resource temporarily unavailable");
      }
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    }
    EXPECT_EQ(change(), error + "Connection refused");
    EXPECT_EQ(OpenSockets(), before);

    const Listener back(kSocket);
    EXPECT_EQ(change(), "");
    EXPECT_EQ(Announced(back), "tarn.test.plain ");
    DBStore::testing::SetHook(
        [](auto, std::string_view detail) { return detail == kSwitch ? 1 : 0; });
    EXPECT_EQ(change(), "0 refused by a test: NOTIFY_KEELD");
    DBStore::testing::SetHook(nullptr);
    EXPECT_EQ(Announced(back), "");
  });
}

TEST_F(NotificationTest, SwitchedOffItCostsOneReadOnTheConnectionAtHand) {
  SetKeyValue(kSwitch, "false");
  const auto connection = DBStore::GetConnection(DBStore::Type::CURRENT_STORE, true);
  int operations = 0;
  DBStore::testing::SetHook([&](DBStore::testing::Operation operation, std::string_view) {
    ++operations;
    return operation == DBStore::testing::Operation::READ_KEY_VALUE ? 0 : 1;
  });
  NotifyIfAllowlisted(resolver_, connection);
  EXPECT_EQ(operations, 1);
  NotifyIfAllowlisted(resolver_);  // there is no connection to be had
  EXPECT_EQ(operations, 2);
  DBStore::testing::SetHook(nullptr);
}

using UdsClientTest = NotificationTest;

std::string ConnectTo(const std::string& endpoint) {
  UdsClient client(endpoint);
  return Raised([&] { client.Connect(); });
}

std::string SendTo(UdsClient& client, const std::string& text) {
  return Raised([&] { client.Send(text); });
}

TEST_F(UdsClientTest, ConnectsToPathNamesOfUpTo107BytesAndToNothingElse) {
  const std::string longest(107, 'n');
  const Listener listener(longest);
  EXPECT_EQ(ConnectTo(longest), "nothing");
  EXPECT_EQ(ConnectTo(longest + "n"), "std Endpoint address too long.");
  EXPECT_EQ(ConnectTo("absent"), "std Failed to connect socket: No such file or directory");
  EXPECT_EQ(ConnectTo(""), "std Failed to connect socket: Invalid argument");
  EXPECT_EQ(ConnectTo(std::string("\0abstract", 9)),
            "std Failed to connect socket: Invalid argument");
}

TEST_F(UdsClientTest, IsConnectedOnceUntilItDisconnects) {
  const Listener listener("socket");
  const int next = ::dup(0);  // the number that the socket will have
  ::close(next);
  UdsClient client("socket");
  EXPECT_EQ(SendTo(client, "x"), "std Not connected to an endpoint.");
  client.Connect();
  client.Connect();
  EXPECT_EQ(::fcntl(next, F_GETFD), FD_CLOEXEC);
  client.Send("one ");
  client.Send("message");
  client.Disconnect();
  client.Disconnect();
  EXPECT_EQ(::fcntl(next, F_GETFD), -1);
  EXPECT_EQ(listener.Receive(), "one message");
  EXPECT_EQ(listener.Accept(), -1) << "there was a second connection";
}

TEST_F(UdsClientTest, SaysWhatBecameOfAMessageThatThePeerDoesNotTake) {
  const std::string big(1 << 20, 'x');
  const auto partly = MatchesRegex("std Partial write: [1-9][0-9]+B written, expected 1048576B\\.");
  const Listener listener("socket");
  UdsClient first("socket");
  first.Connect();
  ::close(listener.Accept());
  EXPECT_EQ(SendTo(first, "x"), "std Failed to send data: Broken pipe");

  UdsClient second("socket");
  second.Connect();
  std::thread peer([reading = listener.Accept()] {
    char block[1000];
    EXPECT_GT(::read(reading, block, sizeof block), 0);
    ::close(reading);
  });
  EXPECT_THAT(SendTo(second, big), partly);
  peer.join();

  UdsClient third("socket");
  third.Connect();
  EXPECT_THAT(SendTo(third, big), partly);
  EXPECT_EQ(SendTo(third, "x"), "std Failed to send data: Resource temporarily unavailable");
}

TEST_F(UdsClientTest, GivesUpOnAFullBacklogWhateverSignalsCome) {
  const Listener listener("socket", 0);
  UdsClient first("socket");
  first.Connect();
  struct sigaction action {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &action, nullptr);
  const itimerval often{{0, 30000}, {0, 30000}};
  const itimerval never{};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  EXPECT_EQ(ConnectTo("socket"), "std Failed to connect socket: Resource temporarily unavailable");
  ::setitimer(ITIMER_REAL, &never, nullptr);
}

}  // namespace
}  // namespace TarnConfigStore
