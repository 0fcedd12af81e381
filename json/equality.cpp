#include "json/equality.h"

#include <algorithm>
#include <cstdint>

namespace Json {
namespace {

__extension__ using SignedWide = __int128;

template <class Number>
int Order(Number a, Number b) {
  return a < b ? -1 : static_cast<int>(a > b);
}

SignedWide WholeOf(const Value& integer) {
  return integer.IsInt64() ? static_cast<SignedWide>(integer.GetInt64())
                           : static_cast<SignedWide>(integer.GetUint64());
}

int CompareToDouble(SignedWide integer, double real) {
  constexpr double kSmall = 1e18;  // converting to 64 bits is cheap
  if (real > -kSmall && real < kSmall) {
    const auto whole = static_cast<std::int64_t>(real);
    const int order = Order(integer, static_cast<SignedWide>(whole));
    return order != 0 ? order : Order(static_cast<double>(whole), real);
  }
  constexpr double kPastUnsigned = 18446744073709551616.0;  // 2^64
  if (real >= kPastUnsigned) {
    return -1;
  }
  if (real < -kPastUnsigned) {
    return 1;
  }
  return Order(integer, static_cast<SignedWide>(real));  // so large a double is whole
}

}  // namespace

int CompareNumbers(const Value& a, const Value& b) {
  if (a.IsInt64() && b.IsInt64()) {
    return Order(a.GetInt64(), b.GetInt64());
  }
  if (a.IsDouble() && b.IsDouble()) {
    return Order(a.GetDouble(), b.GetDouble());
  }
  if (a.IsDouble()) {
    return -CompareToDouble(WholeOf(b), a.GetDouble());
  }
  if (b.IsDouble()) {
    return CompareToDouble(WholeOf(a), b.GetDouble());
  }
  return Order(WholeOf(a), WholeOf(b));
}

bool Equal(const Value& a, const Value& b) {
  if (a.IsNumber() && b.IsNumber()) {
    return CompareNumbers(a, b) == 0;
  }
  if (a.IsArray() && b.IsArray()) {
    return std::equal(a.Begin(), a.End(), b.Begin(), b.End(), Equal);
  }
  if (!a.IsObject() || !b.IsObject()) {
    return a == b;
  }
  // Most objects that are the same have their members in the same order.
  auto beside = b.MemberBegin();
  return a.MemberCount() == b.MemberCount() &&
         std::all_of(a.MemberBegin(), a.MemberEnd(), [&b, &beside](const auto& member) {
           const auto& there = *beside++;
           const Value* other = Text(there.name) == Text(member.name)
                                    ? &there.value
                                    : FindMember(b, Text(member.name));
           return other != nullptr && Equal(member.value, *other);
         });
}

}  // namespace Json
