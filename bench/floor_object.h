// An object as hand-written code would keep it.
#pragma once

#include "json/json.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Benchmarks {

/// One object's data in a memory pool sized to its text, and the row's metadata.
class FloorObject {
 public:
  /// \param textSize  bytes of all the texts that will be parsed into it
  explicit FloorObject(std::size_t textSize);
  FloorObject(const FloorObject&) = delete;
  FloorObject& operator=(const FloorObject&) = delete;

  /// Parses a text, as strictly as the library: UTF-8 checked, numbers in full precision. It
  /// becomes the data, or is laid over the data that is there, member by member. Raises
  /// std::runtime_error for what is no JSON object.
  /// \param text  followed by a NUL
  void Lay(std::string_view text);

  Json::Value& Data() { return data_; }

  std::string instanceId;
  std::string version;
  std::string creationTime;
  std::string modifiedTime;
  std::int64_t revision = 0;

 private:
  std::unique_ptr<char[]> buffer_;
  Json::Allocator pool_;
  Json::Value data_;
};

}  // namespace Benchmarks
