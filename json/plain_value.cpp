#include "json/plain_value.h"

#include "json/number_text.h"
#include "json/plain_reader.h"

#include <cstring>
#include <utility>

namespace Json {
namespace {

/// From where to where the memory of a value was moved.
class Shift {
 public:
  Shift(const char* from, char* to) : from_(from), to_(to) {}
  template <class T>
  T* Of(const T* at) const {
    return reinterpret_cast<T*>(to_ + (reinterpret_cast<const char*>(at) - from_));
  }

 private:
  const char* from_;
  char* to_;
};

}  // namespace
}  // namespace Json

// A value shows what it points to only to those it hands its events to. Its memory has been moved: whoever takes
// it there is told where.
template <>
template <>
inline bool Json::Value::Accept(Json::Shift& shift) const {
  auto& self = const_cast<Json::Value&>(*this);
  if (IsObject() && !ObjectEmpty()) {
    self.SetMembersPointer(shift.Of(GetMembersPointer()));
    for (Member& member : self.GetObject()) {
      member.name.Accept(shift);
      member.value.Accept(shift);
    }
  } else if (IsArray() && !Empty()) {
    self.SetElementsPointer(shift.Of(GetElementsPointer()));
    for (Json::Value& element : self.GetArray()) {
      element.Accept(shift);
    }
  } else if (data_.f.flags == kCopyStringFlag) {
    self.SetStringPointer(shift.Of(GetStringPointer()));
  }
  return true;
}

namespace Json {
namespace {

// All of its memory comes from pools: so does the stack's, which begins in the caller's.
using StackedDocument = rapidjson::GenericDocument<Encoding, Allocator, Allocator>;
constexpr std::size_t kStack = 4096;
constexpr std::size_t kStackWithHeader = kStack + 64;

// Stateless; without one of ours, each pool would allocate its own.
SystemAllocator& System() {
  static SystemAllocator allocator;
  return allocator;
}

class Builder {
 public:
  Builder(StackedDocument& document, Origin origin) : document_(document), origin_(origin) {}

  bool Null() { return document_.Null(); }
  bool Bool(bool value) { return document_.Bool(value); }
  bool Number(std::string_view text, bool isInteger) {
    const NumberText number(text, isInteger);
    const bool altered = number.GetKind() == NumberText::Kind::LONG_INTEGER;
    return number.GetKind() != NumberText::Kind::TOO_LARGE &&
           !(altered && origin_ == Origin::OUTSIDE) && number.HandOn(document_);
  }
  bool String(std::string_view text, bool /*stays*/) {
    return document_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()), true);
  }
  bool Key(std::string_view text, bool stays) { return String(text, stays); }
  bool Open(bool isObject) {
    return ++depth_ <= kMaxDepth && (isObject ? document_.StartObject() : document_.StartArray());
  }
  bool Close(bool isObject, std::size_t count) {
    --depth_;
    const auto size = static_cast<rapidjson::SizeType>(count);
    return isObject ? document_.EndObject(size) : document_.EndArray(size);
  }

 private:
  StackedDocument& document_;
  const Origin origin_;
  std::size_t depth_ = 0;
};

}  // namespace

bool ReadPlain(std::string_view text, Origin origin, Value& value, Allocator& pool) {
  alignas(std::max_align_t) std::array<char, kStackWithHeader> memory;
  Allocator stack(memory.data(), memory.size(), kStack, &System());
  StackedDocument document(&pool, kStack, &stack);
  bool done = false;
  auto build = [&](StackedDocument& into) {
    Builder builder(into, origin);
    done = PlainReader(text, builder).Read();
    return done;
  };
  document.Populate(build);
  if (done) {
    value = std::move(static_cast<Value&>(document));
  }
  return done;
}

std::size_t HeaderOfPool() {
  static const auto size = [] {
    alignas(std::max_align_t) std::array<char, 128> block;
    Allocator pool(block.data(), block.size(), kStack, &System());
    return static_cast<std::size_t>(static_cast<char*>(pool.Malloc(1)) - block.data());
  }();
  return size;
}

std::optional<std::size_t> ReadPlainInPlace(std::string_view text, char* memory, std::size_t size,
                                            Value& value) {
  Allocator pool(memory, size, kStack, &System());
  const std::size_t inOnePiece = pool.Capacity();
  return ReadPlain(text, Origin::STORED, value, pool) && pool.Capacity() == inOnePiece
             ? std::optional(pool.Size())
             : std::nullopt;
}

PlainValue::PlainValue(std::string_view text, Origin origin)
    : pool_(memory_.data(), memory_.size(), kStack, &System()) {
  const std::size_t inOnePiece = pool_.Capacity();
  done_ = ReadPlain(text, origin, value_, pool_) && pool_.Capacity() == inOnePiece;
}

Value PlainValue::MoveTo(Allocator& pool) {
  const char* const from = memory_.data() + HeaderOfPool();
  if (const std::size_t size = Room(); size > 0) {
    char* const to = static_cast<char*>(pool.Malloc(size));
    std::memcpy(to, from, size);
    Shift shift(from, to);
    value_.Accept(shift);
  }
  return std::move(value_);
}

}  // namespace Json
