#include "schema/file_stamp.h"

#include <ctime>
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

}  // namespace

FileStamp StampOf(const std::string& path) noexcept {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    return {};
  }
  return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
          Nanoseconds(status.st_ctim)};
}

std::int64_t Now() noexcept {
  timespec time = {};
  clock_gettime(CLOCK_REALTIME, &time);
  return Nanoseconds(time);
}

bool MayHideChanges(const FileStamp& stamp, std::int64_t taken) noexcept {
  return stamp.Exists() && (Near(stamp.modified, taken) || Near(stamp.changed, taken));
}

}  // namespace TarnSchemaStore
