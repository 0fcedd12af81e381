#include "tarnconfigstore/process.h"

#include "tarnconfigstore/error_codes.h"

#include "platform/logger.h"

#include <cerrno>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TarnConfigStore {

namespace {

// Closes all that the child would inherit beside the three standard ones.
class FileActions {
 public:
  FileActions() {
    if (error_ = posix_spawn_file_actions_init(&actions_); error_ == 0) {
      error_ = posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
      made_ = true;
    }
  }
  ~FileActions() {
    if (made_) {
      posix_spawn_file_actions_destroy(&actions_);
    }
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  int Error() const { return error_; }
  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
  int error_ = 0;
  bool made_ = false;
};

}  // namespace

bool ExecCommand(const char** args) {
  pid_t pid = -1;
  const FileActions actions;
  // posix_spawn takes its arguments without const but does not write them.
  const int failure = actions.Error() != 0 ? actions.Error()
                                           : posix_spawn(&pid, args[0], actions.Get(), nullptr,
                                                         const_cast<char* const*>(args), environ);
  if (failure != 0) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_PROCESS_START_FAILED, std::strerror(failure));
    return false;
  }
  int status = 0;
  pid_t waited = -1;
  do {
    waited = waitpid(pid, &status, 0);
  } while (waited < 0 && errno == EINTR);
  if (waited < 0) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_PROCESS_WAIT_FAILED, static_cast<int>(pid),
                         std::strerror(errno));
    return false;
  }
  // Judged by the exit byte alone, as the header promises: a child that a signal ended has a zero
  // one and counts as a success.
  const int exitByte = WEXITSTATUS(status);
  if (exitByte != 0) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_PROCESS_EXIT_STATUS, exitByte);
    return false;
  }
  return true;
}

}  // namespace TarnConfigStore
