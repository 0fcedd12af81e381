// JSON, as the whole library uses it. The only header that includes RapidJSON, so that one set of
// switches holds everywhere.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

namespace Json {

/// Called when a JSON value is used as something it is not: throws what the hook throws, or
/// std::logic_error where none is set or it returns.
[[noreturn]] void RaiseAssertion(const char* file, int line, const char* condition);

/// Says what a failed assertion throws, for the whole process. Those who stand above set it.
using AssertionHook = void (*)(const char* file, int line, const char* condition);
void SetAssertionHook(AssertionHook hook) noexcept;

}  // namespace Json

// Without this, RapidJSON marks moves noexcept and a failed assertion inside one would end the
// process.
#define RAPIDJSON_HAS_CXX11_NOEXCEPT 0
#define RAPIDJSON_ASSERT(x) \
  (static_cast<bool>(x) ? static_cast<void>(0) : ::Json::RaiseAssertion(__FILE__, __LINE__, #x))
#define RAPIDJSON_HAS_STDSTRING 1

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Json {

using Encoding = rapidjson::UTF8<>;

/// Where all memory of values, stacks and buffers comes from. RapidJSON uses what its own allocator
/// answers without a look, null included; this one throws std::bad_alloc instead.
struct SystemAllocator {
  static constexpr bool kNeedFree = true;
  void* Malloc(std::size_t size) { return size == 0 ? nullptr : Checked(std::malloc(size)); }
  void* Realloc(void* block, std::size_t /*before*/, std::size_t size) {
    if (size == 0) {
      std::free(block);
      return nullptr;
    }
    return Checked(std::realloc(block, size));
  }
  static void Free(void* block) { std::free(block); }

 private:
  static void* Checked(void* block) {
    if (block == nullptr) {
      throw std::bad_alloc();
    }
    return block;
  }
};

using Allocator = rapidjson::MemoryPoolAllocator<SystemAllocator>;
using Value = rapidjson::GenericValue<Encoding, Allocator>;
using Document = rapidjson::GenericDocument<Encoding, Allocator, SystemAllocator>;
using Buffer = rapidjson::GenericStringBuffer<Encoding, SystemAllocator>;

}  // namespace Json

// Its own copies by way of a document, whose stack comes from its own allocator, and which copies each
// list of members and elements once more.
template <>
template <>
inline Json::Value::GenericValue(const Json::Value& source, Json::Allocator& allocator) : data_() {
  if (source.IsObject()) {
    const rapidjson::SizeType count = source.data_.o.size;
    Member* const members = static_cast<Member*>(allocator.Malloc(count * sizeof(Member)));
    const Member* from = source.GetMembersPointer();
    for (Member* to = members; to != members + count; ++to, ++from) {
      new (&to->name) Json::Value(from->name, allocator);
      new (&to->value) Json::Value(from->value, allocator);
    }
    data_.f.flags = kObjectFlag;
    SetMembersPointer(members);
    data_.o.size = data_.o.capacity = count;
  } else if (source.IsArray()) {
    const rapidjson::SizeType count = source.data_.a.size;
    Json::Value* const elements =
        static_cast<Json::Value*>(allocator.Malloc(count * sizeof(Json::Value)));
    const Json::Value* from = source.GetElementsPointer();
    for (Json::Value* to = elements; to != elements + count; ++to, ++from) {
      new (to) Json::Value(*from, allocator);
    }
    data_.f.flags = kArrayFlag;
    SetElementsPointer(elements);
    data_.a.size = data_.a.capacity = count;
  } else if (source.IsString() && source.data_.f.flags != kConstStringFlag) {
    SetStringRaw(StringRefType(source.GetString(), source.GetStringLength()), allocator);
  } else {
    data_ = source.data_;
  }
}

namespace Json {

/// Deepest nesting that is read or checked: every walk over a value recurses.
constexpr std::size_t kMaxDepth = 128;

/// Where a text comes from. What comes from OUTSIDE may name no member twice and hold no integer of
/// more than 64 bits, which would be altered; in the store's own rows both are read as well as can
/// be.
enum class Origin { STORED, OUTSIDE };

/// What a parse came to.
struct ParseResult {
  bool ok = true;
  std::size_t offset = 0;  ///< bytes before the fault
  std::string message;     ///< what was wrong, in words; empty when ok
  const char* forLogs =
      nullptr;  ///< the same where the message names a member, which may be secret

  explicit operator bool() const { return ok; }

  /// Where the fault is in the text, the way editors count: lines and bytes from 1.
  struct Place {
    std::size_t line;
    std::size_t column;
  };
  Place PlaceIn(std::string_view text) const;

  /// The fault and its place: "line 2, column 7: Invalid value."
  std::string Describe(std::string_view text) const;
};

/// Parses a text into the root of a document, whose allocator then owns the value: strict UTF-8,
/// numbers in full precision, none beyond what a double can hold, at most kMaxDepth levels, nothing
/// before or after the value, no byte order mark either. On failure the
/// document is null. Needs no document of its own: `into` may be any document, empty or not.
ParseResult Parse(std::string_view text, Document& into, Origin origin = Origin::STORED);

/// The value as compact text. False, with an empty text, for what JSON cannot say: a string that is
/// not UTF-8, or a number that is not finite.
bool Serialize(const Value& value, std::string& text);

/// A text as a JSON string; an empty one for what is not UTF-8.
std::string Quoted(std::string_view text);

/// The member of an object, or null where the value is no object or has no such member. Never
/// asserts.
const Value* FindMember(const Value& object, std::string_view name);
inline Value* FindMember(Value& object, std::string_view name) {
  return const_cast<Value*>(FindMember(static_cast<const Value&>(object), name));
}

/// True when the object has the member and its value is the boolean true.
bool IsTrue(const Value& object, std::string_view name);

inline bool IsContainer(const Value& value) {
  return value.IsObject() || value.IsArray();
}
/// An object without members, or an array without elements.
inline bool IsEmptyContainer(const Value& value) {
  return (value.IsObject() && value.ObjectEmpty()) || (value.IsArray() && value.Empty());
}

inline std::string_view Text(const Value& string) {
  return {string.GetString(), string.GetStringLength()};
}

/// A value that refers to a text that outlives it; nothing is copied. Not for values that are
/// copied on.
inline Value Reference(std::string_view text) {
  return Value(rapidjson::StringRef(text.data(), static_cast<rapidjson::SizeType>(text.size())));
}

/// A value that holds a copy of a text.
inline Value Copy(std::string_view text, Allocator& allocator) {
  return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
}

// What is changed and lives on when memory runs out is changed by these: it is as it was where they
// throw. RapidJSON's own ways leave it unfit for use.
void AddMember(Value& object, Value&& name, Value&& value, Allocator& allocator);
/// Neither may lie in the other.
void CopyInto(Value& target, const Value& source, Allocator& allocator);

}  // namespace Json
