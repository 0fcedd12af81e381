#include "schema/file_stamp.h"

#include "process/clock.h"

#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace TarnSchemaStore {
namespace {

// Far more than any clock's tick.
constexpr std::int64_t kTick = 100'000'000;

std::int64_t Nanoseconds(const timespec& time) noexcept {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

bool Near(std::int64_t a, std::int64_t b) noexcept {
  return a - b < kTick && b - a < kTick;
}

FileStamp StampFrom(const struct stat& status) noexcept {
  return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
          Nanoseconds(status.st_ctim)};
}

}  // namespace

FileStamp StampOf(const std::string& path) noexcept {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? StampFrom(status) : FileStamp();
}

FileWatch::FileWatch(const std::string& path) noexcept
    : file_(open(path.c_str(), O_PATH | O_CLOEXEC)) {}

FileStamp FileWatch::Stamp() const noexcept {
  struct stat status = {};
  return file_.IsOpen() && fstat(file_.Number(), &status) == 0 ? StampFrom(status) : FileStamp();
}

std::int64_t Now() noexcept {
  return Clock::Read(CLOCK_REALTIME);
}

bool MayHideChanges(const FileStamp& stamp, std::int64_t taken) noexcept {
  return stamp.Exists() && (Near(stamp.modified, taken) || Near(stamp.changed, taken));
}

}  // namespace TarnSchemaStore
