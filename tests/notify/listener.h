// A daemon's side of a local socket.
#pragma once

#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace TestSupport {

/// Listens on a path, in the place of what was there. Accepts nothing by itself.
class Listener {
 public:
  explicit Listener(const std::string& path, int backlog = 64)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ::unlink(path.c_str());
    if (::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket_, backlog) != 0) {
      throw std::runtime_error("cannot listen on " + path);
    }
  }
  ~Listener() { ::close(socket_); }

  /// A sender that has connected, or -1 when there is none.
  int Accept() const {
    pollfd waiting{socket_, POLLIN, 0};
    return ::poll(&waiting, 1, 0) == 1 ? ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC) : -1;
  }
  /// All that one sender sent until it closed; nothing when there is none.
  std::string Receive() const {
    std::string text;
    const int sender = Accept();
    char block[4096];
    for (ssize_t length = 1; sender >= 0 && length > 0;) {
      length = ::read(sender, block, sizeof block);
      text.append(block, length > 0 ? static_cast<std::size_t>(length) : 0);
    }
    ::close(sender);
    return text;
  }

 private:
  int socket_;
};

}  // namespace TestSupport
