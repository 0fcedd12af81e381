#include "tarnconfigstore/file.h"
#include "tarnconfigstore/process.h"

#include "errors/raise.h"
#include "json/json.h"
#include "support/captured_log.h"
#include "support/raised.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace TarnConfigStore {
namespace {

using HostCtl::Lib::HostCtlException;
using HostCtl::Lib::NotaMessage;
using TestSupport::CapturedLog;
using TestSupport::Raised;

static_assert(std::is_base_of_v<HostCtlException, ConfigStoreException> &&
              std::is_base_of_v<ConfigStoreException, ValidationException> &&
              std::is_base_of_v<ConfigStoreException, InvalidArgumentException> &&
              std::is_base_of_v<ConfigStoreException, InvalidTypeException>);

TEST(Errors, RenderAsOtherProgramsReadThem) {
  CapturedLog log;
  std::vector<ErrorInfo> none;
  EXPECT_EQ(ValidationException(2000, "m", none).toString(), "Error Code: 2000\nMessage: m\n");
  std::vector<ErrorInfo> two = {{"a\x1b", "x"}, {"b", "y"}};
  const ValidationException both(1089, "m", two);
  EXPECT_EQ(both.toString(), "Error Code: 1089\nMessage: m\nDetails: \na\\x1b: x\nb: y\n");
  EXPECT_EQ(static_cast<const ConfigStoreException&>(both).toString(),
            "Error Code: 1089\nMessage: m\n");
  EXPECT_EQ(both.GetDetailedMessage(), "m");
}

TEST(Errors, BuildingOneLogsItOnceWithABacktrace) {
  CapturedLog log;
  const InvalidTypeException unthrown(2000, "100%s wrong");
  EXPECT_EQ(log.Count("0 [2000] 100%s wrong"), 1);
  EXPECT_GT(log.Lines().size(), 2U) << "no backtrace";
}

TEST(Errors, ChainsOfRecordsRenderFromTheLastToTheFirst) {
  const auto last = std::make_shared<NotaMessage>("disk", "%s is %s, 100%%",
                                                  std::vector<std::string>{"sda", "full"});
  const auto first =
      std::make_shared<NotaMessage>("store", "cannot write %s", std::vector<std::string>{}, last);
  EXPECT_EQ(HostCtlException("failed", first).GetDetailedMessage(),
            "failed\nNota Stack: \n[disk]: sda is full, 100%[store]: cannot write ");
}

TEST(Errors, CodedFailuresFillTheirTemplate) {
  CapturedLog log;
  EXPECT_EQ(Raised([] { ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, "x%dy"); }),
            "CSE 1037 No schema is installed for x%dy.");
  EXPECT_EQ(Raised([] { ThrowFailure("a\x1b[2J\n\\"); }), R"(CSE 2000 a\x1b[2J\n\)");
  CSLogger::Log(0, "b%s", "\x9b\r");
  EXPECT_EQ(log.Count(R"(0 b\x9b\r)"), 1);
  EXPECT_EQ(Format("50%%"), "50%");
  std::vector<ErrorInfo> errors;
  AppendErrorInfo("/", CS_SUBOBJECT_NOT_FOUND, errors, "/a/b/c");
  EXPECT_EQ(errors.at(0).field, "/");
  EXPECT_NE(errors.at(0).error.find("/a/b/c"), std::string::npos);
}

TEST(Errors, AssertionsOfTheJsonLibraryAreCaughtEvenInMoves) {
  CapturedLog log;
  Json::Document document;
  document.Parse("[1]");
  EXPECT_EQ(Raised([&] { document.FindMember("x"); }), "CSE 1082 JSON: IsObject()");
  EXPECT_EQ(Raised([&] { document[0] = document[0]; }), "CSE 1082 JSON: this != &rhs");
  EXPECT_EQ(Raised([&] { document[7].GetInt(); }), "CSE 1082 JSON: index < data_.a.size");
}

bool Shell(const char* script) {
  const char* arguments[] = {"/bin/sh", "-c", script, nullptr};
  return ExecCommand(arguments);
}

TEST(Process, IsJudgedByItsExitByteAlone) {
  CapturedLog log;
  EXPECT_TRUE(Shell("exit 0"));
  EXPECT_FALSE(Shell("exit 3"));
  EXPECT_EQ(log.Count("0 [1104] The process ended with status 3."), 1);
  EXPECT_TRUE(Shell("kill -9 $$")) << "a signal leaves the exit byte 0";
  const int inherited = dup2(0, 9);
  EXPECT_TRUE(Shell("test -e /proc/self/fd/2 -a ! -e /proc/self/fd/9"));
  close(inherited);
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
