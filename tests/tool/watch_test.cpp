#include "notify/listener.h"
#include "notify/notification_message.h"
#include "notify/uds_client.h"
#include "support/child_process.h"
#include "support/test_types.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <memory>

namespace {

using TarnConfigStore::MakeNotificationMessage;
using TarnConfigStore::UdsClient;
using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr const char* kSocket = "kslLocalSocketKeeldNotifyWisp";

// Runs tarnctl beside itself; what that prints goes to the files "out" and "err".
class WatchTest : public testing::Test {
 protected:
  WatchTest() {
    fs::current_path(host_.Root());
    ::setenv("TARN_HOST_ROOT", host_.Root().c_str(), 1);
    fs::create_directories(fs::path(allowlist_).parent_path());
    std::ofstream(allowlist_) << R"(["tarn.test.*"])";
    std::ofstream("type.json") << TestSupport::kPlainType;
    EXPECT_EQ(Run({"schema", "install", "type.json"}), 0);
    EXPECT_EQ(Run({"kv", "set", "NOTIFY_KEELD", "true"}), 0);
  }
  using Process = std::unique_ptr<TestSupport::ChildProcess>;
  static Process Start(std::vector<const char*> arguments, int output = -1) {
    arguments.insert(arguments.begin(), "tarnctl");
    arguments.push_back(nullptr);
    return std::make_unique<TestSupport::ChildProcess>([&arguments, output] {
      ::dup2(output >= 0 ? output : ::creat("out", 0600), 1);
      ::dup2(::creat("err", 0600), 2);
      return ::execv(TARNCTL, const_cast<char* const*>(arguments.data()));
    });
  }
  static int Run(const std::vector<const char*>& arguments) { return Start(arguments)->Wait(); }
  static Process StartWatch(const std::vector<const char*>& arguments = {"watch"},
                            int output = -1) {
    fs::remove("err");
    Process process = Start(arguments, output);
    AwaitLine("err", 0);
    return process;
  }
  static int Stop(const Process& process, int signal = SIGTERM) {
    ::kill(process->Id(), signal);
    return process->Wait();
  }
  // A line of a file, counted from 0, once it is there as a whole.
  static std::string AwaitLine(const char* path, int number) {
    for (int attempt = 0; attempt < 1000; ++attempt, ::usleep(20000)) {
      std::ifstream file(path);
      std::string line;
      for (int i = 0; std::getline(file, line) && !file.eof(); ++i) {
        if (i == number) {
          return line;
        }
      }
    }
    return "nothing for 20 seconds";
  }
  static std::string AwaitObject(int number) {
    const std::string line = AwaitLine("out", number);
    return line.substr(line.find("\"object\"") + 9);
  }
  static void Send(const std::string& text) {
    UdsClient sender(kSocket);
    sender.Connect();
    sender.Send(text);
  }

  TestSupport::TemporaryHost host_;
  const std::string allowlist_ = host_.Path(HostPaths::kNotifyAllowlist);
};

TEST_F(WatchTest, ShowsWhatSetAnnouncesUntilItIsStopped) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Process watch = StartWatch();
    EXPECT_EQ(fs::status(kSocket).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    const Process set = Start({"set", "tarn/test/plain", "name=x"}, 0);
    const std::string sender = std::to_string(set->Id());
    EXPECT_EQ(set->Wait(), 0);
    EXPECT_THAT(AwaitLine("out", 0),
                testing::MatchesRegex(R"(\{"time":"20..-..-..T..:..:..\....Z",)"
                                      R"("object":"tarn.test.plain","pid":)" +
                                      sender + "}"));
    EXPECT_EQ(Stop(watch, signal), 0);
    EXPECT_FALSE(fs::exists(kSocket));
  }
}

TEST_F(WatchTest, SurvivesBrokenPartialAndSlowSenders) {
  const std::string good = MakeNotificationMessage("a.b.c", 7);
  const auto post = [](const std::string& headers, const std::string& body) {
    return "POST /api HTTP/1.1\r\n" + headers + "\r\n\r\n" + body;
  };
  const auto body = [&](const std::string& text) {
    return post("content-length:" + std::to_string(text.size()) + " ", text);
  };
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string text = good.substr(good.find('{'));
    return body(text.replace(text.find(from), from.size(), to));
  };
  const std::pair<std::string, const char*> bad[] = {
      {"GET / HTTP/1.1\r\n\r\n", "does not begin with POST /api"},
      {"POST /ap", "ends in the middle"},
      {good.substr(0, good.size() - 1), "ends in the middle"},
      {post("Content-Type: x", "{}"), "no Content-Length"},
      {post("Content-Length: 2x", "{}"), "no number"},
      {post("Content-Length: 2\r\nContent-Length: 3", "{}"), "twice"},
      {post("Content-Length: 65536", ""), "longer than 65536 bytes"},
      {post("X: " + std::string(70000, 'x'), ""), "longer than 65536 bytes"},
      {body("{\"a\\n\":1,\"a\\n\":2}"), "line 1, column 15: member \"a\\n\" is named twice"},
      {body(std::string(60000, '[')), "128 levels"},
      {changed("notify\"", "x\""), "another /params/operationId than \"notify\""},
      {changed("\"a.b.c\"", "5"), "no list of texts"},
      {changed("7", "4294967296"), "no process id"},
  };
  const Process watch = StartWatch();
  int line = 0;
  for (const auto& [message, reason] : bad) {
    Send(message);
    EXPECT_THAT(AwaitLine("err", ++line), HasSubstr(reason));
  }
  Send("");
  UdsClient late(kSocket);
  late.Connect();
  late.Send(good.substr(0, 60));
  UdsClient slow(kSocket);
  slow.Connect();
  slow.Send(good.substr(0, 150));
  Send(MakeNotificationMessage("meanwhile", 8));
  EXPECT_EQ(AwaitObject(0), R"("meanwhile","pid":8})");
  for (const char byte : good.substr(150)) {
    slow.Send(std::string(1, byte));
  }
  EXPECT_EQ(AwaitObject(1), R"("a.b.c","pid":7})");
  slow.Send(good + good);
  EXPECT_EQ(AwaitObject(3), R"("a.b.c","pid":7})");
  EXPECT_THAT(AwaitLine("err", ++line), HasSubstr("not complete after 5 seconds"));
  EXPECT_EQ(Stop(watch), 0);
}

TEST_F(WatchTest, TakesTheSocketFromNobodyAndLeavesOnlyItsOwn) {
  std::ofstream(kSocket) << "plain";
  EXPECT_EQ(Run({"watch"}), 1);
  EXPECT_THAT(AwaitLine("err", 0), HasSubstr("is no socket"));
  EXPECT_EQ(fs::file_size(kSocket), 5U);
  {
    const TestSupport::Listener other(kSocket);
    EXPECT_EQ(Run({"--json", "watch"}), 1);
    EXPECT_THAT(AwaitLine("err", 0), HasSubstr("\"another program listens on ksl"));
    EXPECT_TRUE(fs::is_socket(kSocket));
  }
  const Process watch = StartWatch();  // in the place of what that one left
  Send(MakeNotificationMessage("x", 1));
  EXPECT_EQ(AwaitObject(0), R"("x","pid":1})");
  const TestSupport::Listener successor(kSocket);
  EXPECT_EQ(Stop(watch), 0);
  EXPECT_TRUE(fs::is_socket(kSocket)) << "it removed the file of another";
  EXPECT_EQ(Run({"watch", "--count", "0"}), 2);
  EXPECT_EQ(Run({"watch", "--socket", std::string(108, 'x').c_str()}), 2);
}

// Listening all the same: who watches may put it right.
TEST_F(WatchTest, SaysWhatKeepsChangesFromBeingAnnounced) {
  const auto told = [](const std::vector<std::string>& reasons) {
    const Process watch = StartWatch();
    for (int line = 0; const std::string& reason : reasons) {
      EXPECT_THAT(AwaitLine("err", 2 + line++), HasSubstr(reason));
    }
    EXPECT_EQ(Stop(watch), 0);
  };
  ASSERT_EQ(Run({"kv", "set", "NOTIFY_KEELD", "yes", "--force"}), 0);
  std::ofstream(allowlist_) << R"(["tarn.test.none"])";
  told({"NOTIFY_KEELD is not \"true\"", "names no type that is installed"});
  fs::remove(allowlist_);
  fs::remove(host_.Path(HostPaths::kStore));
  told({"cannot be read", allowlist_ + ": there is no such file"});
  EXPECT_EQ(Run({"watch", "--socket", "none/socket"}), 1);
  EXPECT_THAT(AwaitLine("err", 0), HasSubstr(host_.Root() + "/none: No such file"));
}

TEST_F(WatchTest, EndsWithItsCountOrItsReader) {
  Process watch = StartWatch({"watch", "--count", "2"});
  Send(MakeNotificationMessage("x", 1) + MakeNotificationMessage("y", 1) +
       MakeNotificationMessage("z", 1));
  EXPECT_EQ(watch->Wait(), 0);
  EXPECT_EQ(AwaitObject(1), R"("y","pid":1})");

  int pipe[2];
  ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  watch = StartWatch({"watch"}, pipe[1]);
  ::close(pipe[1]);
  ::close(pipe[0]);
  EXPECT_EQ(watch->Wait(), 0);
  EXPECT_FALSE(fs::exists(kSocket));
  EXPECT_EQ(fs::file_size("err"), AwaitLine("err", 0).size() + 1) << "it complained";
}

}  // namespace
