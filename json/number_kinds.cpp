#include "json/number_kinds.h"

#include <cmath>
#include <cstdint>

namespace Json {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 2 * kTwoTo63;

// Of the other kind, and no digit is lost by changing it.
bool CanBecome(NumberKind kind, const Value& number) {
  if (kind == NumberKind::FLOATING) {
    return !number.IsDouble() && number.IsLosslessDouble();
  }
  if (kind != NumberKind::INTEGER || !number.IsDouble()) {
    return false;
  }
  const double value = number.GetDouble();
  return value == std::trunc(value) && value >= -kTwoTo63 && value < kTwoTo64;
}

void Become(NumberKind kind, Value& number) {
  const double value = number.GetDouble();
  if (kind == NumberKind::FLOATING) {
    number.SetDouble(value);
  } else if (value < 0) {
    number.SetInt64(static_cast<std::int64_t>(value));
  } else {
    number.SetUint64(static_cast<std::uint64_t>(value));
  }
}

// Calls `visit(number, kind)` for each number that is to change, until it answers false.
template <class AnyValue, class Visit>
bool ForEachUnsettled(AnyValue& value, SchemaPlace place, Visit visit) {
  if (!place) {
    return true;
  }
  if (value.IsNumber()) {
    const NumberKind kind = place.KindOfNumbers();
    return !CanBecome(kind, value) || visit(value, kind);
  }
  if (value.IsObject()) {
    for (auto& member : value.GetObject()) {
      const bool holdsNumbers = member.value.IsNumber() || member.value.IsObject() ||
                                (member.value.IsArray() && !member.value.Empty());
      if (holdsNumbers &&
          !ForEachUnsettled(member.value, place.Property(Text(member.name)), visit)) {
        return false;
      }
    }
  } else if (value.IsArray()) {
    const SchemaPlace items = place.Items();
    for (auto& element : value.GetArray()) {
      const bool holdsNumbers = element.IsNumber() || element.IsObject() || element.IsArray();
      if (holdsNumbers && !ForEachUnsettled(element, items, visit)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

void SettleNumbers(Value& value, SchemaPlace place) {
  ForEachUnsettled(value, place, [](Value& number, NumberKind kind) {
    Become(kind, number);
    return true;
  });
}

bool NumbersAreSettled(const Value& value, SchemaPlace place) {
  return ForEachUnsettled(value, place,
                          [](const Value& /*number*/, NumberKind /*kind*/) { return false; });
}

}  // namespace Json
