// Files that somebody else put there.
#include "json/text_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace Json {
namespace {

namespace fs = std::filesystem;

TEST(TextFile, IsReadOnlyWhereNobodyHasToBeWaitedFor) {
  std::string name = (fs::temp_directory_path() / "tarn-text-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  const fs::path directory = name;
  const std::string file = directory / "file";
  std::ofstream(file) << std::string(9000, 'x');
  ASSERT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
  fs::create_symlink(file, directory / "link");
  fs::create_symlink("gone", directory / "dangling");
  const struct {
    std::string path;
    std::size_t most;
    int error;
    const char* reason;
  } cases[] = {
      {file, 9000, 0, ""},
      {directory / "link", 9000, 0, ""},
      {file, 8999, EFBIG, "is larger than 8999 bytes"},
      {directory / "pipe", 9000, ENOTSUP, "is no regular file"},
      {"/dev/zero", 9000, ENOTSUP, "is no regular file"},
      {directory, 9000, EISDIR, "is a directory"},
      {directory / "dangling", 9000, ENOENT, "No such file or directory"},
      {file + "/inside", 9000, ENOTDIR, "Not a directory"},
      // It says that it is empty, and holds more than that.
      {"/proc/self/status", 10, EFBIG, "is larger than 10 bytes"},
      // It can be opened, and fails when it is read.
      {"/proc/self/mem", 9000, EIO, "Input/output error"},
  };
  for (const auto& row : cases) {
    const TextFile read = ReadTextFile(row.path, row.most);
    EXPECT_EQ(read.error, row.error) << row.path;
    EXPECT_EQ(read.text.size(), row.error == 0 ? 9000U : 0U) << row.path;
    EXPECT_TRUE(read || read.Reason() == row.reason) << row.path << ": " << read.Reason();
  }
  fs::remove_all(directory);
}

}  // namespace
}  // namespace Json
