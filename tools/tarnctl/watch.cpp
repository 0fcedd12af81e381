#include "watch.h"

#include "failure.h"
#include "watch_message.h"
#include "watch_socket.h"
#include "watch_stop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tarnctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeForSender{5};
constexpr std::size_t kMostSenders = 64;  // further ones wait to be accepted

struct Sender {
  Descriptor socket;
  Clock::time_point deadline;
  WatchMessageReader reader;
};

bool HasEvent(int descriptor, short events) {
  pollfd polled{descriptor, events, 0};
  return ::poll(&polled, 1, 0) > 0;
}

bool IsOutputAbandoned() {
  return HasEvent(STDOUT_FILENO, 0);
}

// In UTC, with milliseconds.
std::string Now() {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto fraction =
      std::chrono::duration_cast<milliseconds>(now.time_since_epoch()) % std::chrono::seconds(1);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  char date[32];
  char text[48];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(fraction.count()));
  return text;
}

/// Serves the senders, one poll after the other.
class Watch {
 public:
  Watch(const WatchSocket& socket, int stop, std::optional<std::uint64_t> count,
        const Output& output)
      : socket_(socket), stop_(stop), left_(count), output_(output) {}

  void Run() {
    while (left_ != 0U && WaitForEvents()) {
      ReceiveAll();
      LeaveLateSenders();
      senders_.erase(std::remove_if(senders_.begin(), senders_.end(),
                                    [](const Sender& sender) { return !sender.socket.IsOpen(); }),
                     senders_.end());
      AcceptSender();
    }
  }

 private:
  enum Polled : std::size_t { STOP, OUTPUT, LISTENER, FIRST_SENDER };

  // False when it is time to end.
  bool WaitForEvents() {
    const bool hasRoom = senders_.size() < kMostSenders;
    polled_ = {
        {stop_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}, {hasRoom ? socket_.Get() : -1, POLLIN, 0}};
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

  int MillisecondsToNextDeadline() const {
    if (senders_.empty()) {
      return -1;
    }
    // They came in the order of their deadlines.
    const auto wait =
        std::chrono::ceil<std::chrono::milliseconds>(senders_.front().deadline - Clock::now());
    return std::max(0, static_cast<int>(wait.count()));
  }

  void ReceiveAll() {
    for (std::size_t i = 0; i < senders_.size() && left_ != 0U; ++i) {
      if (polled_[FIRST_SENDER + i].revents != 0) {
        Receive(senders_[i]);
      }
    }
  }

  void Receive(Sender& sender) {
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
        Print(*notification);
      }
    } catch (const std::invalid_argument& error) {
      Leave(sender, error.what());
    }
  }

  void Print(const Notification& notification) {
    for (const std::string& object : notification.objects) {
      const Json line = {{"time", Now()}, {"object", object}, {"pid", notification.process}};
      output_.PrintText(line.dump() + "\n");
    }
    if (left_) {
      --*left_;
    }
  }

  // With a word about a message that has begun and will not be read to its end.
  void Leave(Sender& sender, std::string reason) const {
    if (sender.reader.IsInsideMessage()) {
      // It may quote what was sent, which must neither start a line nor drive a terminal.
      std::replace_if(
          reason.begin(), reason.end(),
          [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }, '?');
      Report({ExitCode::FAILED,
              TarnConfigStore::CS_GENERIC,
              "a message that is no notification: it " + reason,
              {}},
             output_.AsJson());
    }
    sender.socket = Descriptor(-1);
  }

  void LeaveLateSenders() {
    const Clock::time_point now = Clock::now();
    for (Sender& sender : senders_) {
      if (sender.socket.IsOpen() && sender.deadline <= now) {
        Leave(sender,
              "is not complete after " + std::to_string(kTimeForSender.count()) + " seconds");
      }
    }
  }

  void AcceptSender() {
    if (polled_[LISTENER].revents != 0) {
      Descriptor accepted = socket_.Accept();
      if (accepted.IsOpen()) {
        senders_.push_back({std::move(accepted), Clock::now() + kTimeForSender, {}});
      }
    }
  }

  const WatchSocket& socket_;
  int stop_;
  std::optional<std::uint64_t> left_;
  const Output& output_;
  std::vector<Sender> senders_;
  std::vector<pollfd> polled_;
};

}  // namespace

void WatchNotifications(const std::string& socketPath, std::optional<std::uint64_t> count,
                        const Output& output) {
  const int stop = CatchStopSignals();
  const WatchSocket socket(socketPath);
  std::fprintf(stderr, "tarnctl: listening on %s\n", socketPath.c_str());
  try {
    Watch(socket, stop, count, output).Run();
  } catch (const ToolError&) {
    if (!HasEvent(stop, POLLIN) && !IsOutputAbandoned()) {
      throw;
    }
  }
}

}  // namespace tarnctl
