#include "given/hidden_terminal.h"

#include "failure.h"
#include "json/utf8.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <system_error>
#include <termios.h>
#include <unistd.h>

namespace tarnctl {
namespace {

constexpr std::array<int, 5> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};

volatile std::sig_atomic_t received = 0;

extern "C" void Receive(int signal) {
  received = signal;
}

// Takes the signals for as long as it lives. They come while the terminal is waited for, and at no
// other time, so that none is missed between looking and waiting.
class SignalsTaken {
 public:
  SignalsTaken() {
    received = 0;
    sigset_t taken;
    ::sigemptyset(&taken);
    for (const int signal : kSignals) {
      ::sigaddset(&taken, signal);
    }
    ::pthread_sigmask(SIG_BLOCK, &taken, &mask_);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], nullptr, &before_[i]);
      // Whoever started the tool with a signal ignored means that.
      if (before_[i].sa_handler != SIG_IGN) {
        struct sigaction action {};
        action.sa_handler = Receive;
        ::sigfillset(&action.sa_mask);
        ::sigaction(kSignals[i], &action, nullptr);
      }
    }
  }
  ~SignalsTaken() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], &before_[i], nullptr);
    }
    ::pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  }
  SignalsTaken(const SignalsTaken&) = delete;
  SignalsTaken& operator=(const SignalsTaken&) = delete;

  /// False when a signal came first.
  bool WaitForInput(int terminal) const {
    pollfd polled{terminal, POLLIN, 0};
    while (received == 0) {
      if (::ppoll(&polled, 1, nullptr, &mask_) >= 0) {
        return true;
      }
      if (errno != EINTR) {
        return true;  // reading says what is wrong
      }
    }
    return false;
  }

 private:
  sigset_t mask_;
  std::array<struct sigaction, kSignals.size()> before_;
};

[[noreturn]] void RaiseUnread(const std::string& reason) {
  throw ToolError(ExitCode::FAILED, "cannot read from the terminal: " + reason);
}

// Does not show what is typed for as long as it lives. What was typed before it was asked is dropped.
class Hidden {
 public:
  explicit Hidden(int terminal) : terminal_(terminal) {
    if (::tcgetattr(terminal, &shown_) != 0) {
      RaiseUnread(std::generic_category().message(errno));
    }
    termios hidden = shown_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHOE | ECHOK);
    hidden.c_lflag |= static_cast<tcflag_t>(ICANON | ECHONL);
    if (::tcsetattr(terminal, TCSAFLUSH, &hidden) != 0) {
      RaiseUnread(std::generic_category().message(errno));
    }
  }
  ~Hidden() { ::tcsetattr(terminal_, TCSADRAIN, &shown_); }
  Hidden(const Hidden&) = delete;
  Hidden& operator=(const Hidden&) = delete;

 private:
  int terminal_;
  termios shown_;
};

// True when the line is there as a whole, false when a signal came.
bool ReadLine(int terminal, const SignalsTaken& signals, std::string& line) {
  for (;;) {
    if (!signals.WaitForInput(terminal)) {
      return false;
    }
    std::array<char, 4096> block;  // as much as a terminal gives at once
    const ssize_t length = ::read(terminal, block.data(), block.size());
    if (length < 0 && errno != EINTR) {
      RaiseUnread(std::generic_category().message(errno));
    }
    if (length == 0) {
      RaiseUnread("it ends");
    }
    line.append(block.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    if (const std::size_t end = line.find('\n'); end != std::string::npos) {
      line.resize(end);
      return true;
    }
  }
}

}  // namespace

std::string ReadHiddenLine(int terminal, const std::string& name) {
  for (;;) {
    std::string line;
    {
      const SignalsTaken signals;
      const Hidden hidden(terminal);
      std::fputs((Json::Utf8::WithoutControls(name) + ": ").c_str(), stderr);
      std::fflush(stderr);
      if (ReadLine(terminal, signals, line)) {
        return line;
      }
    }
    std::fputs("\n", stderr);
    ::raise(received);
  }
}

}  // namespace tarnctl
