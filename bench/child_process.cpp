#include "child_process.h"

#include "tarnconfigstore/host.h"

#include "contention.h"
#include "daemon.h"

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

double Perform(ChildTask task, const std::string& root) {
  switch (task) {
    case ChildTask::FIRST_GET_LIBRARY:
      return MeasureFirstGetByLibrary();
    case ChildTask::FIRST_GET_FLOOR:
      return MeasureFirstGetByFloor(root);
    case ChildTask::HELD_MEMORY_LIBRARY:
      return MeasureMemoryOfLibrary();
    case ChildTask::HELD_MEMORY_FLOOR:
      return MeasureMemoryOfFloor(root);
    case ChildTask::HELD_INSTANCES_LIBRARY:
      return MeasureInstancesOfLibrary();
    case ChildTask::HELD_INSTANCES_FLOOR:
      return MeasureInstancesOfFloor(root);
    case ChildTask::PEAK_OF_KEEP_ONE_LIBRARY:
      return MeasurePeakOfLibrary();
    case ChildTask::PEAK_OF_KEEP_ONE_FLOOR:
      return MeasurePeakOfFloor(root);
    case ChildTask::DAEMON_THAT_READS:
      ServeAsDaemon(Daemon::Manner::READS);
    case ChildTask::DAEMON_THAT_ACCEPTS:
      ServeAsDaemon(Daemon::Manner::ACCEPTS_ONLY);
    case ChildTask::DAEMON_THAT_HANGS:
      ServeAsDaemon(Daemon::Manner::HANGS);
    case ChildTask::WRITE_BESIDE_OTHERS:
      return MeasureOneWrite();
    case ChildTask::CONTEND:
      Contend();
      return 0;
  }
  throw std::runtime_error("no such task");
}

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

std::string OwnProgram() {
  return std::filesystem::read_symlink("/proc/self/exe").string();
}

Child StartChild(ChildTask task, const std::string& root) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("cannot make a pipe");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::string program = OwnProgram();
  std::string mark = kChild;
  std::string number = std::to_string(static_cast<int>(task));
  std::string rootArgument = root;
  char* arguments[] = {program.data(), mark.data(), number.data(), rootArgument.data(), nullptr};
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
  const std::string answer = ReadAll(child.output);
  close(child.output);
  int status = 0;
  while (waitpid(child.process, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0 || answer.empty()) {
    throw std::runtime_error("a child failed");
  }
  return answer;
}

double MeasureInChild(ChildTask task, const std::string& root) {
  return std::strtod(Collect(StartChild(task, root)).c_str(), nullptr);
}

bool ServeAsChild(int argc, char** argv) {
  if (argc != kChildArguments || std::strcmp(argv[1], kChild) != 0) {
    return false;
  }
  const std::string root = argv[3];
  TarnConfigStore::SetHostRoot(root);
  std::printf("%.0f\n", Perform(static_cast<ChildTask>(std::atoi(argv[2])), root));
  return true;
}

}  // namespace Benchmarks
