#include "daemon.h"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Benchmarks {
namespace {

sockaddr_un Address() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  Daemon::Endpoint().copy(address.sun_path, sizeof address.sun_path - 1);
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

void ReadToTheEnd(int sender) {
  std::array<char, 4096> block;
  while (read(sender, block.data(), block.size()) > 0) {
  }
}

}  // namespace

const std::string& Daemon::Endpoint() {
  static const std::string name = "kslLocalSocketKeeldNotifyWisp";
  return name;
}

Daemon::Daemon(Manner manner) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  constexpr int kBacklog = 128;
  AllowManyDescriptors();
  unlink(Endpoint().c_str());
  const sockaddr_un address = Address();
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(socket_, kBacklog) != 0) {
    close(socket_);
    throw std::runtime_error("cannot listen on " + Endpoint());
  }
  thread_ = std::thread([this, manner] { Serve(manner); });
}

Daemon::~Daemon() {
  shutdown(socket_, SHUT_RDWR);  // wakes the thread
  thread_.join();
  close(socket_);
  unlink(Endpoint().c_str());
  for (const int sender : senders_) {
    close(sender);
  }
}

void Daemon::Serve(Manner manner) {
  for (;;) {
    const int sender = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    if (sender < 0) {
      if (errno == EINTR) {
        continue;
      }
      return;
    }
    ++accepted_;
    if (manner == Manner::ACCEPTS_ONLY) {
      senders_.push_back(sender);
    } else {
      ReadToTheEnd(sender);
      close(sender);
    }
  }
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
