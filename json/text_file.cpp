#include "json/text_file.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Json {
namespace {

// An open file. Closing it, in a destructor, would be the end of the process for a thread that is
// cancelled there.
class OpenFile {
 public:
  explicit OpenFile(const char* path) {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_);
    do {
      number_ = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    } while (number_ < 0 && errno == EINTR);
  }
  ~OpenFile() {
    if (number_ >= 0) {
      close(number_);
    }
    pthread_setcancelstate(cancelState_, nullptr);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int Number() const { return number_; }

 private:
  int cancelState_ = PTHREAD_CANCEL_ENABLE;
  int number_ = -1;
};

// 0, or why a file is not to be read.
int Judge(const OpenFile& file, std::size_t most, struct stat& status) {
  if (file.Number() < 0 || fstat(file.Number(), &status) != 0) {
    return errno;
  }
  if (!S_ISREG(status.st_mode)) {
    return S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
  }
  return static_cast<std::uintmax_t>(status.st_size) > most ? EFBIG : 0;
}

// The size is no more than a hint: files grow, and those of the kernel have none.
int ReadAll(const OpenFile& file, std::size_t most, std::string& text) {
  std::array<char, 4096> block;
  for (;;) {
    const ssize_t got = read(file.Number(), block.data(), block.size());
    if (got == 0) {
      return 0;
    }
    if (got > 0) {
      if (static_cast<std::size_t>(got) > most - text.size()) {
        return EFBIG;
      }
      text.append(block.data(), static_cast<std::size_t>(got));
    } else if (errno != EINTR) {
      return errno;
    }
  }
}

}  // namespace

std::string TextFile::Reason() const {
  switch (error) {
    case EISDIR:
      return "is a directory";
    case ENOTSUP:
      return "is no regular file";
    case EFBIG:
      return "is larger than " + std::to_string(most) + " bytes";
    default:
      return std::generic_category().message(error);
  }
}

TextFile ReadTextFile(const char* path, std::size_t most) {
  TextFile result;
  result.most = most;
  const OpenFile file(path);
  struct stat status = {};
  result.error = Judge(file, most, status);
  if (result) {
    result.text.reserve(static_cast<std::size_t>(status.st_size));
    result.error = ReadAll(file, most, result.text);
  }
  if (!result) {
    result.text.clear();
  }
  return result;
}

}  // namespace Json
