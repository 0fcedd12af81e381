// A file descriptor that is closed when its owner goes.
#pragma once

#include "platform/no_cancellation.h"

#include <unistd.h>
#include <utility>

/// Owns an open file, or nothing.
class FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  /// \param number  what a system call answered: negative for nothing
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { Close(); }

  bool IsOpen() const noexcept { return number_ >= 0; }
  int Number() const noexcept { return number_; }

  /// False, with errno, when closing what was open failed; there is nothing open afterwards all the
  /// same.
  bool Close() noexcept {
    if (!IsOpen()) {
      return true;
    }
    const NoCancellation uncancelled;
    return ::close(std::exchange(number_, -1)) == 0;
  }

 private:
  int number_ = -1;
};
