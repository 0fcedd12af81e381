#include "daemon.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Benchmarks {
namespace {

constexpr const char* kEndpoint = "kslLocalSocketKeeldNotifyWisp";

sockaddr_un Address() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string(kEndpoint).copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

// One that only accepts keeps a descriptor for each sender.
void AllowManyDescriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

void Report() {
  if (write(STDOUT_FILENO, ".", 1) != 1) {
    std::_Exit(1);  // the parent has gone
  }
}

int Listen(int backlog) {
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_un address = Address();
  unlink(kEndpoint);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, backlog) != 0) {
    std::_Exit(1);
  }
  return listener;
}

void ReadToTheEnd(int sender) {
  std::array<char, 4096> block;
  while (read(sender, block.data(), block.size()) > 0) {
  }
}

// Tells by a byte on standard output that it listens and, where it only accepts, by another one of each
// sender, whom it keeps waiting. One that hangs has room for one sender, and accepts nobody.
[[noreturn]] void Serve(Daemon::Manner manner) {
  constexpr int kBacklog = 128;
  AllowManyDescriptors();
  const int listener = Listen(manner == Daemon::Manner::HANGS ? 0 : kBacklog);
  Report();
  while (manner == Daemon::Manner::HANGS) {
    pause();
  }
  for (;;) {
    const int sender = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (sender < 0) {
      continue;
    }
    if (manner == Daemon::Manner::READS) {
      ReadToTheEnd(sender);
      close(sender);
    } else {
      Report();
    }
  }
}

const ChildTask daemonThatReads("daemon-that-reads", [](const std::string& /*root*/) -> double {
  Serve(Daemon::Manner::READS);
});
const ChildTask daemonThatAccepts("daemon-that-accepts", [](const std::string& /*root*/) -> double {
  Serve(Daemon::Manner::ACCEPTS_ONLY);
});
const ChildTask daemonThatHangs("daemon-that-hangs", [](const std::string& /*root*/) -> double {
  Serve(Daemon::Manner::HANGS);
});

}  // namespace

Daemon::Daemon(Manner manner)
    : child_(StartChild(manner == Manner::READS          ? daemonThatReads
                        : manner == Manner::ACCEPTS_ONLY ? daemonThatAccepts
                                                         : daemonThatHangs,
                        {})) {
  if (!ReadReports(1)) {
    throw std::runtime_error("the daemon does not listen");
  }
}

Daemon::~Daemon() {
  kill(child_.process, SIGKILL);
  while (waitpid(child_.process, nullptr, 0) < 0 && errno == EINTR) {
  }
  close(child_.output);
  unlink(kEndpoint);
}

bool Daemon::HasAccepted(int senders) {
  return ReadReports(senders);
}

bool Daemon::ReadReports(int count) {
  constexpr int kMilliseconds = 1000;
  std::array<char, 4096> reports;
  for (int seen = 0; seen < count;) {
    pollfd output{child_.output, POLLIN, 0};
    const ssize_t length = poll(&output, 1, kMilliseconds) == 1
                               ? read(child_.output, reports.data(), reports.size())
                               : 0;
    if (length <= 0) {
      return false;
    }
    seen += static_cast<int>(length);
  }
  return true;
}

void SendBare(const std::string& message) {
  const sockaddr_un address = Address();
  const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool sent =
      connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
      send(client, message.data(), message.size(), MSG_NOSIGNAL) ==
          static_cast<ssize_t>(message.size());
  close(client);
  if (!sent) {
    throw std::runtime_error("floor: the daemon cannot be reached");
  }
}

}  // namespace Benchmarks
