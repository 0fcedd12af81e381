#include "notify/uds_client.h"

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

constexpr microseconds kTimeLimit{100000};
constexpr microseconds kTick{1000};  // the kernel's own is no shorter
static_assert(kTimeLimit < std::chrono::seconds(1), "a timeval holds less as microseconds");
constexpr std::size_t kLongestName = sizeof(sockaddr_un::sun_path) - 1;

}  // namespace

UdsClient::UdsClient(const std::string& endpoint) : endpoint_(endpoint) {}

UdsClient::~UdsClient() {
  Disconnect();
}

// Bounds each later wait on the socket by the time that is left, connecting to a full backlog
// included: poll says nothing of that one.
bool UdsClient::LimitWaits(Clock::time_point now) {
  const auto left = std::chrono::duration_cast<microseconds>(deadline_ - now);
  const bool isLimited = waitLimit_ > microseconds::zero();
  if (isLimited && left <= waitLimit_ && left + kTick > waitLimit_) {
    return true;
  }
  waitLimit_ = std::max(left, microseconds(1));  // none at all would mean for ever
  timeval timeout{};
  timeout.tv_usec = waitLimit_.count();
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
  return result;
}

void UdsClient::Connect() {
  if (socket_.IsOpen()) {
    return;
  }
  deadline_ = Clock::now() + kTimeLimit;
  waitLimit_ = microseconds::zero();
  socket_ = FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket_.IsOpen()) {
    throw std::runtime_error(std::string("Failed to create socket: ") + std::strerror(errno));
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
    throw std::runtime_error(std::string("Failed to connect socket: ") + std::strerror(error));
  }
}

void UdsClient::Send(const std::string& data) {
  if (!socket_.IsOpen()) {
    throw std::runtime_error("Not connected to an endpoint.");
  }
  const ssize_t written = CallWithinDeadline(
      [&] { return ::send(socket_.Number(), data.data(), data.size(), MSG_NOSIGNAL); });
  if (written < 0) {
    throw std::runtime_error(std::string("Failed to send data: ") + std::strerror(errno));
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
