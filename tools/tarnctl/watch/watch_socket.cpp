#include "watch/watch_socket.h"

#include "failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace tarnctl {
namespace {

constexpr int kSocketType = SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC;
constexpr mode_t kAllButOwner = 0177;

[[noreturn]] void RaiseSystemError(const std::string& what, int error) {
  const bool isPermission = error == EACCES || error == EPERM || error == EROFS;
  throw ToolError(isPermission ? ExitCode::PERMISSION : ExitCode::FAILED,
                  what + ": " + std::generic_category().message(error));
}

sockaddr_un AddressOf(const std::string& path) {
  sockaddr_un address{};
  constexpr std::size_t kLongest = sizeof address.sun_path - 1;
  if (path.empty() || path.size() > kLongest || path.find('\0') != std::string::npos) {
    throw ToolError(ExitCode::USAGE,
                    "the path of a socket has 1 to " + std::to_string(kLongest) + " bytes");
  }
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, kLongest);
  return address;
}

const sockaddr* Generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

// Where a socket is to be made, and what its directory is like, for messages.
std::string InDirectory(const std::string& path) {
  std::error_code error;
  const std::filesystem::path directory =
      std::filesystem::absolute(std::filesystem::path(path), error).parent_path();
  struct stat status {};
  if (error || ::stat(directory.c_str(), &status) != 0) {
    return error ? "" : " in " + directory.string();
  }
  char mode[8];
  std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned>(status.st_mode & 07777U));
  return " in " + directory.string() + " (mode " + mode + ", owner " +
         std::to_string(status.st_uid) + ", as user " + std::to_string(::geteuid()) + ")";
}

// Held while a file may be replaced, lest two that start together each take the other's for a
// stale one. Ends with its descriptor, and leaves nothing behind.
Descriptor LockDirectoryOf(const std::string& path) {
  const std::filesystem::path directory = std::filesystem::path(path).parent_path();
  Descriptor lock(
      ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!lock.IsOpen() || ::flock(lock.Get(), LOCK_EX) != 0) {
    RaiseSystemError("cannot listen on " + path + InDirectory(path), errno);
  }
  return lock;
}

void RemoveStaleSocket(const std::string& path, const sockaddr_un& address) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    return;  // binding tells what is wrong, if anything is
  }
  if (!S_ISSOCK(status.st_mode)) {
    throw ToolError(ExitCode::FAILED, path + " is no socket, and is left as it is");
  }
  const Descriptor probe(::socket(AF_UNIX, kSocketType, 0));
  if (!probe.IsOpen()) {
    RaiseSystemError("cannot make a socket", errno);
  }
  if (::connect(probe.Get(), Generic(address), sizeof address) == 0 || errno == EAGAIN) {
    throw ToolError(ExitCode::FAILED, "another program listens on " + path);
  }
  if (errno != ECONNREFUSED) {
    RaiseSystemError("cannot tell whether another program listens on " + path, errno);
  }
  if (::unlink(path.c_str()) != 0) {
    RaiseSystemError("cannot replace " + path + ", which nobody listens on", errno);
  }
}

}  // namespace

WatchSocket::OwnFile::OwnFile(const std::string& path) : path_(path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) == 0) {
    device_ = status.st_dev;
    inode_ = status.st_ino;
  }
}

WatchSocket::OwnFile::~OwnFile() {
  struct stat status {};
  if (::lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_) {
    ::unlink(path_.c_str());
  }
}

WatchSocket::WatchSocket(const std::string& path) : socket_(::socket(AF_UNIX, kSocketType, 0)) {
  if (!socket_.IsOpen()) {
    RaiseSystemError("cannot make a socket", errno);
  }
  const sockaddr_un address = AddressOf(path);
  const Descriptor lock = LockDirectoryOf(path);
  RemoveStaleSocket(path, address);
  const mode_t previous = ::umask(kAllButOwner);
  const bool isBound = ::bind(socket_.Get(), Generic(address), sizeof address) == 0;
  const int error = errno;
  ::umask(previous);
  if (!isBound) {
    RaiseSystemError("cannot listen on " + path + InDirectory(path), error);
  }
  file_.emplace(path);
  if (::listen(socket_.Get(), SOMAXCONN) != 0) {
    RaiseSystemError("cannot listen on " + path, errno);
  }
}

Descriptor WatchSocket::Accept() const {
  Descriptor sender(::accept4(socket_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!sender.IsOpen() && errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
    RaiseSystemError("cannot accept a sender", errno);
  }
  return sender;
}

}  // namespace tarnctl
