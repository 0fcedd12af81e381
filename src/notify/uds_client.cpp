#include "notify/uds_client.h"

#include "platform/daemon_patience.h"
#include "platform/logger.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

namespace TarnConfigStore {
namespace {

using std::chrono::microseconds;

constexpr microseconds kTick{1000};  // the kernel's own is no shorter
constexpr std::size_t kLongestName = sizeof(sockaddr_un::sun_path) - 1;

}  // namespace

UdsClient::UdsClient(const std::string& endpoint) : endpoint_(endpoint) {}

UdsClient::~UdsClient() {
  Disconnect();
}

// Bounds each later wait on the socket by the time that is left, connecting to a full backlog
// included: poll says nothing of that one.
bool UdsClient::LimitWaits(Clock::time_point now) {
  if (!waits_) {
    return true;
  }
  const auto left = std::chrono::duration_cast<microseconds>(deadline_ - now);
  const bool isLimited = waitLimit_ > microseconds::zero();
  if (isLimited && left <= waitLimit_ && left + kTick > waitLimit_) {
    return true;
  }
  waitLimit_ = std::max(left, microseconds(1));  // none at all would mean for ever
  timeval timeout{};
  timeout.tv_usec = waitLimit_.count();  // less than a second
  return ::setsockopt(socket_.Number(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout) == 0;
}

// Calls again after a signal, as long as there is time. The result is the call's: negative on
// failure, with errno.
template <class Call>
auto UdsClient::CallWithinDeadline(Call call) {
  decltype(call()) result = -1;
  Clock::time_point now = Clock::now();
  do {
    if (!LimitWaits(now)) {
      return result;
    }
    result = call();
    if (result >= 0 || errno != EINTR) {
      return result;
    }
    now = Clock::now();
  } while (now < deadline_);
  errno = EAGAIN;  // the time is up, though it was a signal that ended the last wait
  return result;
}

// With errno. "Try again" is what a wait ends with that was too long, or not to be.
void UdsClient::Fail(const char* what) {
  const int error = errno;
  if (error == EAGAIN) {
    DaemonPatience::NoteTimeout();
  }
  throw std::runtime_error(what + std::string(std::strerror(error)));
}

void UdsClient::Connect() {
  if (socket_.IsOpen()) {
    return;
  }
  const std::chrono::milliseconds limit(DaemonPatience::Limit());
  waits_ = limit.count() > 0;
  deadline_ = Clock::now() + limit;
  waitLimit_ = microseconds::zero();
  socket_ = FileDescriptor(
      ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | (waits_ ? 0 : SOCK_NONBLOCK), 0));
  if (!socket_.IsOpen()) {
    Fail("Failed to create socket: ");
  }
  if (endpoint_.size() > kLongestName) {
    throw std::runtime_error("Endpoint address too long.");
  }
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  // As a C string: with a NUL in front it would name something outside of the file system.
  const std::size_t length = std::strlen(endpoint_.c_str());
  std::memcpy(address.sun_path, endpoint_.c_str(), length);
  const auto addressLength = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
  if (CallWithinDeadline([&] {
        return ::connect(socket_.Number(), reinterpret_cast<const sockaddr*>(&address),
                         addressLength);
      }) < 0) {
    const int error = errno;
    Disconnect();
    errno = error;
    Fail("Failed to connect socket: ");
  }
  DaemonPatience::NoteAnswer();
}

void UdsClient::Send(const std::string& data) {
  if (!socket_.IsOpen()) {
    throw std::runtime_error("Not connected to an endpoint.");
  }
  const ssize_t written = CallWithinDeadline(
      [&] { return ::send(socket_.Number(), data.data(), data.size(), MSG_NOSIGNAL); });
  if (written < 0) {
    Fail("Failed to send data: ");
  }
  if (static_cast<std::size_t>(written) != data.size()) {
    throw std::runtime_error("Partial write: " + std::to_string(written) + "B written, expected " +
                             std::to_string(data.size()) + "B.");
  }
}

void UdsClient::Disconnect() noexcept {
  if (!socket_.Close()) {
    char text[128];  // nothing here may throw
    std::snprintf(text, sizeof text, "Failed to close socket: %s", std::strerror(errno));
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    CSLogger::Log(CSLogger::kFailure, text);
#pragma GCC diagnostic pop
  }
}

}  // namespace TarnConfigStore
