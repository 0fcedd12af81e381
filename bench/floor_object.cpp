#include "floor_object.h"

#include <stdexcept>
#include <utility>

namespace Benchmarks {
namespace {

// What parsed values take up as a rule, and the size of further blocks.
constexpr std::size_t kFactor = 2;
constexpr std::size_t kExtra = 64;
constexpr std::size_t kChunk = 512;
constexpr std::size_t kParseStack = 1024;

Json::SystemAllocator& BaseAllocator() {
  static Json::SystemAllocator allocator;
  return allocator;
}

}  // namespace

FloorObject::FloorObject(std::size_t textSize)
    : buffer_(new char[kFactor * textSize + kExtra]),
      pool_(buffer_.get(), kFactor * textSize + kExtra, kChunk, &BaseAllocator()) {}

void FloorObject::Lay(std::string_view text) {
  constexpr unsigned kFlags =
      rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag;
  Json::Document layer(&pool_, kParseStack, &BaseAllocator());
  layer.Parse<kFlags>(text.data());
  if (layer.HasParseError() || !layer.IsObject()) {
    throw std::runtime_error("floor: a row that is not a JSON object");
  }
  if (data_.IsNull()) {
    data_.Swap(static_cast<Json::Value&>(layer));
    return;
  }
  for (auto& member : layer.GetObject()) {
    if (member.value.IsNull()) {
      continue;
    }
    const auto existing = data_.FindMember(member.name);
    if (existing != data_.MemberEnd()) {
      existing->value = std::move(member.value);
    } else {
      data_.AddMember(std::move(member.name), std::move(member.value), pool_);
    }
  }
}

}  // namespace Benchmarks
