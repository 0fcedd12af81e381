#include "notify/uds_client.h"

#include "notify/listener.h"
#include "support/raised.h"
#include "support/temporary_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/time.h>
#include <thread>

namespace TarnConfigStore {
namespace {

using TestSupport::Listener;
using TestSupport::Raised;

class UdsClientTest : public testing::Test {
 protected:
  UdsClientTest() { std::filesystem::current_path(host_.Root()); }
  static std::string ConnectTo(const std::string& endpoint) {
    UdsClient client(endpoint);
    return Raised([&] { client.Connect(); });
  }
  static std::string SendTo(UdsClient& client, const std::string& text) {
    return Raised([&] { client.Send(text); });
  }

  TestSupport::TemporaryHost host_{TestSupport::TemporaryHost::Content::NOTHING};
};

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
  client.Connect();
  client.Send("again");
  client.Disconnect();
  EXPECT_EQ(listener.Receive(), "again");
}

TEST_F(UdsClientTest, SaysWhatBecameOfAMessageThatThePeerDoesNotTake) {
  const std::string big(1 << 20, 'x');
  const auto partly =
      testing::MatchesRegex("std Partial write: [1-9][0-9]+B written, expected 1048576B\\.");
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
