#include "whole_file.h"

#include "failure.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tarnctl {
namespace {

constexpr std::array<int, 3> kDeadly = {SIGINT, SIGTERM, SIGHUP};

// The file that a deadly signal takes along.
std::atomic<const char*> unfinished{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free);  // as a handler needs it

extern "C" void RemoveUnfinished(int signal) {
  if (const char* path = unfinished.load()) {
    ::unlink(path);
  }
  ::raise(signal);  // which ends the process as soon as the handler has returned: see SA_RESETHAND
}

// Whoever started the tool with a signal ignored means that.
void CatchDeadlySignals() {
  for (const int signal : kDeadly) {
    struct sigaction action {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_DFL) {
      action.sa_handler = RemoveUnfinished;
      action.sa_flags = static_cast<int>(SA_RESETHAND);
      ::sigfillset(&action.sa_mask);
      ::sigaction(signal, &action, nullptr);
    }
  }
}

// Holds signals back, so that none comes between a file and its name among the unfinished.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t deadly;
    ::sigemptyset(&deadly);
    for (const int signal : kDeadly) {
      ::sigaddset(&deadly, signal);
    }
    ::pthread_sigmask(SIG_BLOCK, &deadly, &before_);
  }
  ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

[[noreturn]] void RaiseUnwritable(const std::string& path, const std::string& reason) {
  throw ToolError(ExitCode::FAILED, "cannot write " + path + ": " + reason);
}

// A link stays one, and a device is not replaced by a file.
std::string TargetOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) {
      RaiseUnwritable(path,
                      S_ISDIR(status.st_mode) ? "it is a directory" : "it is no regular file");
    }
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    if (real) {
      return real.get();
    }
  } else if (errno == ENOENT) {
    if (::lstat(path.c_str(), &status) != 0) {
      return path;
    }
    RaiseUnwritable(path, "it is a link to nothing");
  }
  RaiseUnwritable(path, std::generic_category().message(errno));
}

}  // namespace

WholeFile::WholeFile(const std::string& path, Readers readers)
    : path_(path),
      target_(TargetOf(path)),
      readers_(readers),
      temporary_(Directory() + ".tarnctl-XXXXXX") {
  CatchDeadlySignals();
  const SignalsHeld held;
  file_ = Descriptor(::mkostemp(temporary_.data(), O_CLOEXEC));
  if (!file_.IsOpen()) {
    Fail(errno);
  }
  unfinished = temporary_.c_str();
}

WholeFile::~WholeFile() {
  if (!temporary_.empty()) {
    const SignalsHeld held;
    ::unlink(temporary_.c_str());
    unfinished = nullptr;
  }
}

void WholeFile::Write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t length = ::write(file_.Get(), text.data(), text.size());
    if (length < 0 && errno != EINTR) {
      Fail(errno);
    }
    text.remove_prefix(length < 0 ? 0 : static_cast<std::size_t>(length));
  }
}

void WholeFile::Commit() {
  if (readers_ == Readers::ALL) {
    const mode_t mask =
        ::umask(0);  // which one can only ask by changing it; the tool has one thread
    ::umask(mask);
    if (::fchmod(file_.Get(), 0666 & ~mask) != 0) {
      Fail(errno);
    }
  }
  if (::fsync(file_.Get()) != 0) {
    Fail(errno);
  }
  {
    const SignalsHeld held;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
      Fail(errno);
    }
    unfinished = nullptr;
    temporary_.clear();
  }
  SyncDirectory();
}

void WholeFile::Fail(int error) const {
  RaiseUnwritable(path_, std::generic_category().message(error));
}

// With the slash at its end; empty for the working directory.
std::string WholeFile::Directory() const {
  const std::size_t slash = target_.rfind('/');
  return slash == std::string::npos ? std::string() : target_.substr(0, slash + 1);
}

void WholeFile::SyncDirectory() const {
  const std::string directory = Directory();
  const Descriptor opened(
      ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // One that may be written but not read cannot be asked, nor can those of some file systems.
  if (opened.IsOpen() && ::fsync(opened.Get()) != 0 && errno != EINVAL && errno != EROFS) {
    Fail(errno);
  }
}

}  // namespace tarnctl
