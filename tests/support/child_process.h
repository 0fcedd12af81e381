// Running part of a test in another process.
#pragma once

#include <cerrno>
#include <cstdio>
#include <exception>
#include <functional>
#include <grp.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

/// A forked child. Its exit status is what the function returns, 99 if it raises something.
class ChildProcess {
 public:
  explicit ChildProcess(const std::function<int()>& function) : process_(fork()) {
    if (process_ < 0) {
      throw std::runtime_error("cannot fork");
    }
    if (process_ == 0) {
      try {
        _exit(function());
      } catch (const std::exception& error) {
        std::fprintf(stderr, "child: %s\n", error.what());
      }
      _exit(99);
    }
  }
  ~ChildProcess() {
    if (process_ > 0) {
      Wait();
    }
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t Id() const { return process_; }
  /// The exit status, or 1000 and the signal that ended it.
  int Wait() {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

 private:
  pid_t process_;
};

inline int InChild(const std::function<int()>& function) {
  return ChildProcess(function).Wait();
}

/// In a child whom file modes hold back: root becomes another user there, so a test has to take
/// away the rights of everybody.
inline int AsPlainUser(const std::function<int()>& function) {
  return InChild([&function] {
    constexpr unsigned kNobody = 65534;
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setresgid(kNobody, kNobody, kNobody) != 0 ||
         setresuid(kNobody, kNobody, kNobody) != 0)) {
      throw std::runtime_error("cannot become another user");
    }
    return function();
  });
}

}  // namespace TestSupport
