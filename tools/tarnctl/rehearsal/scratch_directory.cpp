#include "rehearsal/scratch_directory.h"

#include "failure.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace tarnctl {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& what, int error) {
  throw ToolError(ExitCode::FAILED, what + ": " + std::generic_category().message(error));
}

std::string MakeDirectory() {
  std::error_code failure;
  const fs::path place = fs::canonical(fs::temp_directory_path(failure), failure);
  if (failure) {
    Fail("there is no directory for temporary files: set TMPDIR", failure.value());
  }
  std::string path = (place / "tarnctl-dry-run-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) {
    Fail(place.string() + ": cannot make a directory in it", errno);
  }
  return path;
}

// Whoever reads what the tool prints must not wait for this process, too.
void LetGoOfStandardDescriptors() {
  const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int descriptor = 0; nothing != -1 && descriptor <= 2; ++descriptor) {
    ::dup2(nothing, descriptor);
  }
}

// Signals from a terminal go to both processes.
[[noreturn]] void SweepAfterEnd(const std::string& path, int lifeline) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    std::signal(signal, SIG_IGN);
  }
  LetGoOfStandardDescriptors();
  char none = 0;
  while (::read(lifeline, &none, 1) == -1 && errno == EINTR) {
  }
  std::error_code failure;
  fs::remove_all(path, failure);
  ::_exit(failure ? EXIT_FAILURE : EXIT_SUCCESS);
}

}  // namespace

ScratchDirectory::ScratchDirectory() : path_(MakeDirectory()) {
  std::array<int, 2> ends = {-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
    const Descriptor other(ends[0]);
    lifeline_ = Descriptor(ends[1]);
    sweeper_ = ::fork();
    if (sweeper_ == 0) {
      ::close(ends[1]);
      SweepAfterEnd(path_, ends[0]);
    }
  }
  if (sweeper_ == -1) {
    const int error = errno;
    ::rmdir(path_.c_str());
    Fail("cannot begin a dry run", error);
  }
}

ScratchDirectory::~ScratchDirectory() {
  lifeline_ = Descriptor(-1);
  int status = 0;
  while (::waitpid(sweeper_, &status, 0) == -1 && errno == EINTR) {
  }
  if (status != 0) {
    Say("remove the directory " + path_ + ", which holds a copy of the store");
  }
}

}  // namespace tarnctl
