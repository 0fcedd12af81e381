#include "json_schema/assertion_check.h"

#include "json/equality.h"
#include "json/utf8.h"
#include "json_schema/describe.h"
#include "json_schema/equal_elements.h"
#include "json_schema/number.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace JsonValidator {
namespace {

constexpr std::size_t kBytesOfAStep = 8;

}  // namespace

bool AssertionCheck::Visit(const Node& node, const Json::Value& value, const Place& place,
                           Findings* findings) const {
  constexpr std::uint64_t kStepsOfAVisit = 3;
  if (!Go(kStepsOfAVisit, place)) {
    return false;
  }
  if (node.composition && node.composition->reference != nullptr) {
    return Visit(*node.composition->reference, value, place, findings);
  }
  const TypeSet type = TypeOf(value);
  if (node.refusesAll || (node.types & type) == 0) {
    // The other assertions of a value of the wrong type would only say the same again.
    return !Asserting(findings) || Fail(findings, place, [&](const ValueWords& say) {
      return node.refusesAll
                 ? "is not allowed here"
                 : "expected " + ExpectedTypes(node.types) + ", found " + say.Found(value);
    });
  }
  bool ok = true;
  if (Asserting(findings)) {
    ok = (node.enumeration == nullptr && node.constant == nullptr) ||
         VisitValue(node, value, place, findings);
    if (node.number && (type & (kIntegerType | kNumberType)) != 0) {
      ok = (ok || findings != nullptr) && VisitNumber(*node.number, value, place, findings);
    }
    if (type == kTextType && (node.text || node.format != nullptr) && !IsSound(value)) {
      return findings != nullptr;
    }
    if (node.text && type == kTextType) {
      ok = (ok || findings != nullptr) && VisitText(*node.text, value, place, findings);
    }
    if (node.format != nullptr) {
      ok = (ok || findings != nullptr) && VisitFormat(*node.format, value, type, place, findings);
    }
  }
  if (node.object && type == kObjectType) {
    ok = (ok || findings != nullptr) && VisitObject(*node.object, value, place, findings);
  }
  if (node.array && type == kArrayType) {
    ok = (ok || findings != nullptr) && VisitArray(*node.array, value, place, findings);
  }
  if (node.composition) {
    ok = (ok || findings != nullptr) && VisitComposition(*node.composition, value, place, findings);
  }
  return Work().Spent() ? GiveUp(place) : ok;
}

bool AssertionCheck::GiveUp(const Place& place) const {
  Work().LeaveOpen(place, "the value");
  return false;
}

bool AssertionCheck::VisitValue(const Node& node, const Json::Value& value, const Place& place,
                                Findings* findings) const {
  bool ok = true;
  if (node.constant != nullptr && !Equal(*node.constant, value, Work())) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      return say.NotAmong({node.constant}, value, false, Work());
    });
  }
  if (node.enumeration != nullptr &&
      std::none_of(node.enumeration->Begin(), node.enumeration->End(),
                   [&](const Json::Value& allowed) { return Equal(allowed, value, Work()); })) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      std::vector<const Json::Value*> allowed;
      for (const Json::Value& one : node.enumeration->GetArray()) {
        allowed.push_back(&one);
      }
      return say.NotAmong(allowed, value, findings->AreWordy(), Work());
    });
  }
  return ok;
}

bool AssertionCheck::VisitNumber(const NumberRules& rules, const Json::Value& value,
                                 const Place& place, Findings* findings) const {
  if (value.IsDouble() && !std::isfinite(value.GetDouble())) {
    return findings != nullptr;  // noted already, as such
  }
  bool ok = true;
  if (rules.minimum != nullptr && Json::CompareNumbers(value, *rules.minimum) < 0) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      return Literal(*rules.minimum) + " is the smallest value allowed, found " + say.Found(value);
    });
  }
  if (rules.maximum != nullptr && Json::CompareNumbers(value, *rules.maximum) > 0) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      return Literal(*rules.maximum) + " is the largest value allowed, found " + say.Found(value);
    });
  }
  if (rules.exclusiveMinimum != nullptr &&
      Json::CompareNumbers(value, *rules.exclusiveMinimum) <= 0) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      return "expected more than " + Literal(*rules.exclusiveMinimum) + ", found " +
             say.Found(value);
    });
  }
  if (rules.exclusiveMaximum != nullptr &&
      Json::CompareNumbers(value, *rules.exclusiveMaximum) >= 0) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      return "expected less than " + Literal(*rules.exclusiveMaximum) + ", found " +
             say.Found(value);
    });
  }
  if (rules.multipleOf != nullptr && !IsMultipleOf(value, *rules.multipleOf)) {
    ok = Fail(findings, place, [&](const ValueWords& say) {
      return "expected a multiple of " + Literal(*rules.multipleOf) + ", found " + say.Found(value);
    });
  }
  return ok;
}

bool AssertionCheck::IsSound(const Json::Value& text) const {
  return scope_.textsAreSound || Json::Utf8::IsValid(Json::Text(text));
}

bool AssertionCheck::VisitText(const TextRules& rules, const Json::Value& value, const Place& place,
                               Findings* findings) const {
  bool ok = true;
  const std::string_view text = Json::Text(value);
  Work().Take(text.size() / kBytesOfAStep);
  // A text has no more characters than bytes, so that few texts are counted.
  if (rules.minLength > 0 || text.size() > rules.maxLength) {
    const std::uint64_t length = Json::Utf8::CountCharacters(text);
    if (length < rules.minLength) {
      ok = Fail(findings, place, [&](const ValueWords& say) {
        return "expected a text of at least " + Count(rules.minLength, "character") + ", found " +
               say.Size(value, length, "character");
      });
    }
    if (length > rules.maxLength) {
      ok = Fail(findings, place, [&](const ValueWords& say) {
        return "expected a text of at most " + Count(rules.maxLength, "character") + ", found " +
               say.Size(value, length, "character");
      });
    }
  }
  if (rules.pattern) {
    switch (rules.pattern->Match(text, Work())) {
      case Pattern::Result::MATCH:
        break;
      case Pattern::Result::NO_MATCH:
        ok = Fail(findings, place, [&](const ValueWords& say) {
          return say.Text(text) + " does not match " + PatternInWords(rules);
        });
        break;
      case Pattern::Result::UNDECIDED:
        Work().LeaveOpen(place, ValueWords(place, scope_.root).Text(text),
                         "against the pattern " + rules.pattern->Text());
        return false;
    }
  }
  return ok;
}

bool AssertionCheck::VisitFormat(const Format& format, const Json::Value& value, TypeSet type,
                                 const Place& place, Findings* findings) const {
  if (type == kTextType) {
    Work().Take(format.steps + value.GetStringLength() / kBytesOfAStep * format.stepsOfEightBytes);
  }
  const bool ok = type == kTextType ? format.holds(Json::Text(value))
                  : type == kIntegerType
                      ? format.integerHolds == nullptr || format.integerHolds(value)
                      : true;
  return ok || Fail(findings, place, [&](const ValueWords& say) {
           return "expected " + std::string(format.expected) + ", found " + say.Found(value);
         });
}

bool AssertionCheck::HoldsForAny(const Node& node, const Json::Value& array,
                                 const Place& place) const {
  for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
    if (Holds(node, array[i], Place{&place, nullptr, i})) {
      return true;
    }
  }
  return false;
}

bool AssertionCheck::VisitArray(const ArrayRules& rules, const Json::Value& value,
                                const Place& place, Findings* findings) const {
  bool ok = true;
  if (Asserting(findings)) {
    if (value.Size() < rules.minItems) {
      ok = Fail(findings, place, [&](const ValueWords& say) {
        return "expected at least " + Count(rules.minItems, "element") + ", found " +
               say.Size(value, value.Size());
      });
    }
    if (value.Size() > rules.maxItems) {
      ok = Fail(findings, place, [&](const ValueWords& say) {
        return "expected at most " + Count(rules.maxItems, "element") + ", found " +
               say.Size(value, value.Size());
      });
    }
    if (rules.unique && (ok || findings != nullptr)) {
      const auto equal = FindEqualElements(value, Work());
      if (equal) {
        ok = Fail(findings, place, [&](const ValueWords&) {
          return "no two elements may be equal, but elements " + std::to_string(equal->first) +
                 " and " + std::to_string(equal->second) + " are";
        });
      }
    }
    if (rules.contains != nullptr && (ok || findings != nullptr) &&
        !HoldsForAny(*rules.contains, value, place)) {
      ok = Fail(findings, place, [&](const ValueWords&) {
        return std::string("none of the elements is of the form that at least one has to have");
      });
    }
  }
  for (rapidjson::SizeType i = 0; i < value.Size() && (ok || findings != nullptr); ++i) {
    const Node* node = rules.Element(i);
    if (node != nullptr) {
      ok = Visit(*node, value[i], Place{&place, nullptr, i}, findings) && ok;
    }
  }
  return ok;
}

}  // namespace JsonValidator
