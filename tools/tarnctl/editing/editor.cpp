#include "editing/editor.h"

#include "failure.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern char** environ;

namespace tarnctl {
namespace {

const char* EditorName() {
  for (const char* variable : {"VISUAL", "EDITOR"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') {
      return name;
    }
  }
  return "vi";
}

[[noreturn]] void RaiseEditorFailed(const std::string& reason) {
  throw ToolError(ExitCode::FAILED, std::string("the editor \"") + EditorName() + "\" " + reason);
}

// Signals from the keyboard reach both, and are the editor's.
class KeyboardIgnored {
 public:
  KeyboardIgnored() {
    ::sigemptyset(&forEditor_);
    // Ignored by this program alone.
    ::sigaddset(&forEditor_, SIGPIPE);
    ::sigaddset(&forEditor_, SIGXFSZ);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], &ignore, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) {
        ::sigaddset(&forEditor_, kSignals[i]);
      }
    }
  }
  ~KeyboardIgnored() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], &before_[i], nullptr);
    }
  }
  KeyboardIgnored(const KeyboardIgnored&) = delete;
  KeyboardIgnored& operator=(const KeyboardIgnored&) = delete;

  /// Those that the editor gets as if this program had never been.
  const sigset_t& ForEditor() const { return forEditor_; }

 private:
  static constexpr std::array<int, 2> kSignals = {SIGINT, SIGQUIT};
  std::array<struct sigaction, kSignals.size()> before_{};
  sigset_t forEditor_;
};

}  // namespace

void RunEditor(const std::string& path) {
  const KeyboardIgnored ignored;
  posix_spawnattr_t attributes;
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setsigdefault(&attributes, &ignored.ForEditor());
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  // The shell splits what the variable says, and never what the path is.
  std::string command = std::string(EditorName()) + " \"$@\"";
  std::string shell = "sh";
  std::string option = "-c";
  std::string file = path;
  char* const arguments[] = {shell.data(), option.data(), command.data(),
                             shell.data(), file.data(),   nullptr};
  pid_t editor = 0;
  const int error = ::posix_spawnp(&editor, "sh", nullptr, &attributes, arguments, environ);
  ::posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    RaiseEditorFailed("cannot be started: " + std::generic_category().message(error));
  }
  int status = 0;
  while (::waitpid(editor, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status)) {
    RaiseEditorFailed("was ended by signal " + std::to_string(WTERMSIG(status)));
  }
  if (WEXITSTATUS(status) != 0) {
    RaiseEditorFailed("ended with status " + std::to_string(WEXITSTATUS(status)));
  }
}

bool IsAttended() {
  return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDERR_FILENO) != 0;
}

bool Confirms(const std::string& question) {
  std::fputs(("tarnctl: " + question + " [Y/n] ").c_str(), stderr);
  std::array<char, 80> answer{};
  if (std::fgets(answer.data(), answer.size(), stdin) == nullptr) {
    std::fputs("\n", stderr);
    return false;
  }
  return answer[0] != 'n' && answer[0] != 'N';
}

}  // namespace tarnctl
