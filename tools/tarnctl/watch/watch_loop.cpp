#include "watch/watch_loop.h"

#include "failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace tarnctl {
namespace {

constexpr std::chrono::seconds kTimeForSender{5};
constexpr std::size_t kMostSenders = 64;  // further ones wait to be accepted

enum Polled : std::size_t { STOP, OUTPUT, LISTENER, FIRST_SENDER };

}  // namespace

bool HasEvent(int descriptor, short events) {
  pollfd polled{descriptor, events, 0};
  return ::poll(&polled, 1, 0) > 0;
}

void WatchLoop::Run() {
  while (left_ != 0U && WaitForEvents()) {
    ReceiveAll();
    LeaveLateSenders();
    senders_.erase(std::remove_if(senders_.begin(), senders_.end(),
                                  [](const Sender& sender) { return !sender.socket.IsOpen(); }),
                   senders_.end());
    AcceptSender();
  }
}

bool WatchLoop::WaitForEvents() {
  const bool hasRoom = senders_.size() < kMostSenders;
  polled_ = {{stop_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}, {hasRoom ? socket_.Get() : -1, POLLIN, 0}};
  for (const Sender& sender : senders_) {
    polled_.push_back({sender.socket.Get(), POLLIN, 0});
  }
  if (::poll(polled_.data(), polled_.size(), MillisecondsToNextDeadline()) < 0) {
    if (errno != EINTR) {
      throw ToolError(ExitCode::FAILED,
                      "cannot wait for senders: " + std::generic_category().message(errno));
    }
    return !HasEvent(stop_, POLLIN);
  }
  return polled_[STOP].revents == 0 && polled_[OUTPUT].revents == 0;
}

int WatchLoop::MillisecondsToNextDeadline() const {
  if (senders_.empty()) {
    return -1;
  }
  // They came in the order of their deadlines.
  const auto wait =
      std::chrono::ceil<std::chrono::milliseconds>(senders_.front().deadline - Clock::now());
  return std::max(0, static_cast<int>(wait.count()));
}

void WatchLoop::ReceiveAll() {
  for (std::size_t i = 0; i < senders_.size() && left_ != 0U; ++i) {
    if (polled_[FIRST_SENDER + i].revents != 0) {
      Receive(senders_[i]);
    }
  }
}

void WatchLoop::Receive(Sender& sender) {
  std::array<char, 16384> block;
  const ssize_t length = ::recv(sender.socket.Get(), block.data(), block.size(), 0);
  if (length < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;
  }
  if (length <= 0) {
    Leave(sender, length < 0 ? "cannot be read: " + std::generic_category().message(errno)
                             : std::string("ends in the middle"));
    return;
  }
  try {
    sender.reader.Append({block.data(), static_cast<std::size_t>(length)});
    while (left_ != 0U && sender.reader.IsInsideMessage()) {
      const std::optional<Notification> notification = sender.reader.Next();
      if (!notification) {
        break;
      }
      print_(*notification);
      if (left_) {
        --*left_;
      }
    }
  } catch (const std::invalid_argument& error) {
    Leave(sender, error.what());
  }
}

void WatchLoop::Leave(Sender& sender, const std::string& reason) const {
  if (sender.reader.IsInsideMessage()) {
    Report({ExitCode::FAILED,
            TarnConfigStore::CS_GENERIC,
            "a message that is no notification: it " + reason,
            {}},
           asJson_);
  }
  sender.socket = Descriptor(-1);
}

void WatchLoop::LeaveLateSenders() {
  const Clock::time_point now = Clock::now();
  for (Sender& sender : senders_) {
    if (sender.socket.IsOpen() && sender.deadline <= now) {
      Leave(sender, "is not complete after " + std::to_string(kTimeForSender.count()) + " seconds");
    }
  }
}

void WatchLoop::AcceptSender() {
  if (polled_[LISTENER].revents != 0) {
    Descriptor accepted = socket_.Accept();
    if (accepted.IsOpen()) {
      senders_.push_back({std::move(accepted), Clock::now() + kTimeForSender, {}});
    }
  }
}

}  // namespace tarnctl
