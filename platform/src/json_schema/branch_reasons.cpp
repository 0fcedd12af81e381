#include "json_schema/branch_reasons.h"

#include "json_schema/describe.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace JsonValidator {
namespace {

constexpr std::string_view kExpected = "expected ";

// The sentence ends before so many.
constexpr std::size_t kMostReasons = 32;

void AddNew(std::vector<std::string>& texts, std::string text) {
  if (texts.size() < kMostReasons && std::find(texts.begin(), texts.end(), text) == texts.end()) {
    texts.push_back(std::move(text));
  }
}

}  // namespace

BranchReasons::BranchReasons(const Json::Value& value, const Place& place, Json::SchemaPlace root)
    : found_(", found " + ValueWords(place, root).Found(value)), field_(FieldOf(place, root)) {}

void BranchReasons::Forget() {
  expected_.clear();
  texts_.clear();
  suggestion_.clear();
  allHere_ = true;
}

void BranchReasons::Add(const std::string& title, const Findings::Finding& reason) {
  const bool isHere = reason.field == field_;
  const std::size_t found = reason.error.find(found_);
  if (isHere && reason.error.starts_with(kExpected) && found != std::string::npos) {
    AddNew(expected_, reason.error.substr(kExpected.size(), found - kExpected.size()));
    if (suggestion_.empty()) {
      suggestion_ = reason.error.substr(found + found_.size());
    }
  } else {
    allHere_ = false;
  }
  AddNew(texts_, (title.empty() ? title : "for " + title + " ") +
                     (isHere ? "" : "at " + reason.field + ": ") + reason.error);
}

std::string BranchReasons::InOneSentence(std::size_t branches) const {
  std::string none = "fits none of the " + std::to_string(branches) + " allowed forms";
  if (texts_.empty()) {
    return none;  // a text that is no UTF-8, of which that is said already
  }
  if (allHere_) {
    std::vector<std::string> expected = expected_;
    if (otherTypes_ != 0) {
      expected.push_back(ExpectedTypes(otherTypes_));
    }
    return std::string(kExpected) + Joined(expected, "or") + found_ + suggestion_;
  }
  return none + "; " + (texts_.size() == 1 ? "of the closest: " : "of those closest: ") +
         Joined(texts_, "or");
}

}  // namespace JsonValidator
