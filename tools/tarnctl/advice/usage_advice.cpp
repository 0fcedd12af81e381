#include "advice/usage_advice.h"

#include "completion/position.h"
#include "json/near_miss.h"

#include <algorithm>
#include <string_view>

namespace tarnctl {
namespace {

std::string Nearest(std::string_view word, const std::vector<std::string>& known) {
  Json::NearMiss nearest(word);
  for (const std::string& one : known) {
    nearest.Offer(one);
  }
  return nearest.Best().empty() ? "" : "; did you mean \"" + std::string(nearest.Best()) + "\"?";
}

std::string Quoted(const std::string& word) {
  return "\"" + word + "\"";
}

}  // namespace

std::string ExplainUnknown(const Program& program, const std::vector<std::string>& words) {
  for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
    const std::string& word = words[i];
    // What is known before this word says whether it can be a verb, an option or a value.
    const Position position = FindPosition(
        program, std::vector<std::string>(words.begin(),
                                          words.begin() + static_cast<std::ptrdiff_t>(i) + 1));
    if (position.argument != nullptr) {
      continue;
    }
    std::vector<std::string> known;
    if (word.starts_with("--")) {
      for (const Argument* const option : OptionsAt(program, position)) {
        known.push_back(option->name);
        known.insert(known.end(), option->aliases.begin(), option->aliases.end());
      }
      known.insert(known.end(), {"--help", "--version"});
    } else {
      for (const Verb& verb : *position.verbs) {
        known.push_back(verb.name);
      }
    }
    const std::string name = word.substr(0, word.find('='));
    const bool isKnown =
        known.empty() || std::find(known.begin(), known.end(), name) != known.end();
    if (!isKnown && word.starts_with("-")) {
      return "there is no option " + Quoted(name) + Nearest(name, known);
    }
    if (!isKnown) {
      return "there is no verb " +
             Quoted(position.verb == nullptr ? word : position.verb->name + " " + word) +
             Nearest(word, known);
    }
  }
  return {};
}

std::string BeginSession(const Program& program) {
  return program.help +
         "\n\n"
         "  tarnctl list                          what is stored\n"
         "  tarnctl schema list                   which types there are\n"
         "  tarnctl get tarn/network/resolver     one object\n"
         "  tarnctl set OBJECT MEMBER=VALUE...    write one\n"
         "  tarnctl help VERB                     how a verb is used\n"
         "  tarnctl --help                        all verbs\n\n"
         "A host that has no store gets one by `tarnctl init`.\n";
}

}  // namespace tarnctl
