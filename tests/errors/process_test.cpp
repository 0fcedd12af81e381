#include "tarnconfigstore/process.h"

#include "tarnconfigstore/file.h"

#include "support/captured_log.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace TarnConfigStore {
namespace {

bool Shell(const char* script) {
  const char* arguments[] = {"/bin/sh", "-c", script, nullptr};
  return ExecCommand(arguments);
}

TEST(Process, IsJudgedByItsExitByteAlone) {
  TestSupport::CapturedLog log;
  EXPECT_TRUE(Shell("exit 0"));
  EXPECT_FALSE(Shell("exit 3"));
  EXPECT_EQ(log.Count("0 [1104] The process ended with status 3."), 1);
  EXPECT_TRUE(Shell("kill -9 $$")) << "a signal leaves the exit byte 0";
}

TEST(Process, ThatCannotBeStartedIsLogged) {
  TestSupport::CapturedLog log;
  const char* arguments[] = {"/no/such/program", nullptr};
  EXPECT_FALSE(ExecCommand(arguments));
  EXPECT_EQ(log.Count("0 [1102] The process could not be started: No such file or directory"), 1);
}

TEST(File, ExistsWhateverItsKindButNotAsADanglingLink) {
  EXPECT_TRUE(FileExists("/"));
  const std::string link =
      std::filesystem::temp_directory_path() / ("tarn-" + std::to_string(getpid()));
  std::filesystem::create_symlink("/no/such/target", link);
  EXPECT_FALSE(FileExists(link));
  std::filesystem::remove(link);
}

}  // namespace
}  // namespace TarnConfigStore
