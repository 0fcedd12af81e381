#include "child_process.h"

#include "tarnconfigstore/host.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace Benchmarks {
namespace {

constexpr const char* kChild = "--measure-as-child";
constexpr int kChildArguments = 4;

// Before any other constant is made.
constinit const ChildTask* tasks = nullptr;

std::string ReadAll(int file) {
  std::string text;
  std::array<char, 256> part;
  ssize_t length = 0;
  while ((length = read(file, part.data(), part.size())) != 0) {
    if (length > 0) {
      text.append(part.data(), static_cast<std::size_t>(length));
    } else if (errno != EINTR) {
      break;
    }
  }
  return text;
}

}  // namespace

ChildTask::ChildTask(const char* name, Perform perform)
    : name_(name), perform_(perform), next_(tasks) {
  tasks = this;
}

double ChildTask::PerformByName(const std::string& name, const std::string& root) {
  for (const ChildTask* task = tasks; task != nullptr; task = task->next_) {
    if (name == task->name_) {
      return task->perform_(root);
    }
  }
  throw std::runtime_error("no such task: " + name);
}

std::string OwnProgram() {
  return std::filesystem::read_symlink("/proc/self/exe").string();
}

std::optional<int> RunProgram(std::vector<std::string> words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = -1;
  const int failure =
      posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    return std::nullopt;
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

Child StartChild(const ChildTask& task, const std::string& root) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("cannot make a pipe");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::string program = OwnProgram();
  std::string mark = kChild;
  std::string name = task.Name();
  std::string rootArgument = root;
  char* arguments[] = {program.data(), mark.data(), name.data(), rootArgument.data(), nullptr};
  pid_t child = -1;
  const int failure = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  if (failure != 0) {
    close(ends[0]);
    throw std::runtime_error("cannot start a child");
  }
  return {child, ends[0]};
}

std::string Collect(const Child& child) {
  std::string answer = ReadAll(child.output);
  close(child.output);
  int status = 0;
  while (waitpid(child.process, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0 || answer.empty()) {
    throw std::runtime_error("a child failed");
  }
  return answer;
}

double MeasureInChild(const ChildTask& task, const std::string& root) {
  return std::strtod(Collect(StartChild(task, root)).c_str(), nullptr);
}

bool ServeAsChild(int argc, char** argv) {
  if (argc != kChildArguments || std::strcmp(argv[1], kChild) != 0) {
    return false;
  }
  const std::string root = argv[3];
  TarnConfigStore::SetHostRoot(root);
  std::printf("%.0f\n", ChildTask::PerformByName(argv[2], root));
  return true;
}

}  // namespace Benchmarks
