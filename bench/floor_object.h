// An object as hand-written code would keep it.
#pragma once

#include "json/json.h"

#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string_view>

namespace Benchmarks {

/// What a row says of an object.
struct FloorMetadata {
  std::string_view instanceId{};
  std::string_view version{};
  std::string_view creationTime{};
  std::string_view modifiedTime{};
  std::int64_t revision = 0;
};

/// One object's data and metadata, all in one block of memory.
class FloorObject {
 public:
  /// Parses the layers, each laid over the ones before member by member; those without data pointer are passed
  /// by. As strict as the library: UTF-8 checked, numbers exact, no deeper than it. Raises std::runtime_error for
  /// what is no JSON object.
  static std::unique_ptr<FloorObject> Make(const FloorMetadata& metadata,
                                           std::span<const std::string_view> layers);
  static std::unique_ptr<FloorObject> Make(const FloorMetadata& metadata, std::string_view text) {
    return Make(metadata, std::span(&text, 1));
  }
  FloorObject(const FloorObject&) = delete;
  FloorObject& operator=(const FloorObject&) = delete;
  ~FloorObject() = default;
  static void operator delete(FloorObject* object, std::destroying_delete_t /*how*/);

  Json::Value& Data() { return data_; }
  const FloorMetadata& Metadata() const { return metadata_; }

 private:
  FloorObject(char* values, std::size_t valuesSize);
  void Lay(Json::Value layer);

  Json::Allocator pool_;
  Json::Value data_;
  FloorMetadata metadata_;
  bool isMerged_ = false;
};

}  // namespace Benchmarks
