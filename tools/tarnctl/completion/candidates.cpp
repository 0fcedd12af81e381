#include "completion/candidates.h"

#include "completion/object_candidates.h"
#include "given/given_object.h"
#include "given/object_name.h"
#include "verbs/option_names.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tarnctl {
namespace {

std::vector<std::string> ValuesOf(const Position& position) {
  const Argument& argument = *position.argument;
  const std::string& meaning = argument.valueName.empty() ? argument.name : argument.valueName;
  const auto object = [&position] {
    return position.given.Takes(kObject) ? position.given.Text(kObject)
                                         : position.given.Text(kType);
  };
  if (meaning == kObject) {
    return FindNames(Named::OBJECT, position.word);
  }
  if (meaning == kType) {
    return FindNames(Named::TYPE, position.word);
  }
  if (meaning == kPrefix) {
    return FindNames(Named::PREFIX, position.word);
  }
  if (meaning == kMember) {
    return FindMembers(object(), position.word);
  }
  if (meaning == kData || meaning == "MEMBER=VALUE") {
    return FindAssignments(object(), position.word);
  }
  if (meaning == kKey) {
    return {std::begin(kKnownKeys), std::end(kKnownKeys)};
  }
  return {};
}

}  // namespace

std::vector<std::string> FindCandidates(const Program& program, const Position& position) {
  std::vector<std::string> words;
  if (position.argument != nullptr) {
    words = ValuesOf(position);
  } else if (position.word.starts_with("-")) {
    for (const Argument* const option : OptionsAt(program, position)) {
      words.push_back(option->name);
      words.insert(words.end(), option->aliases.begin(), option->aliases.end());
    }
    words.emplace_back("--help");
  } else {
    for (const Verb& verb : *position.verbs) {
      if (!verb.isHidden) {
        words.push_back(verb.name);
      }
    }
  }
  std::vector<std::string> fitting;
  for (std::string& word : words) {
    if (word.starts_with(position.word)) {
      fitting.push_back(position.option + word);
    }
  }
  std::sort(fitting.begin(), fitting.end());
  fitting.erase(std::unique(fitting.begin(), fitting.end()), fitting.end());
  return fitting;
}

}  // namespace tarnctl
