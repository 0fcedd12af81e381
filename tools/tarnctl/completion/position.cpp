#include "completion/position.h"

#include <algorithm>

namespace tarnctl {
namespace {

bool IsOption(const Argument& argument) {
  return argument.name.starts_with("--");
}

bool IsNamed(const Argument& argument, std::string_view name) {
  return argument.name == name || std::find(argument.aliases.begin(), argument.aliases.end(),
                                            name) != argument.aliases.end();
}

std::vector<const Argument*> ArgumentsOf(const Verb& verb) {
  std::vector<const Argument*> all;
  for (const Argument& argument : verb.arguments) {
    all.push_back(&argument);
  }
  if (verb.choice) {
    for (const Argument& argument : verb.choice->arguments) {
      all.push_back(&argument);
    }
  }
  return all;
}

class Reader {
 public:
  Reader(const Program& program, Position& position) : program_(program), position_(position) {
    position_.verbs = &program.verbs;
    Take(program.arguments);
  }

  // A word that somebody has finished.
  void Read(const std::string& word) {
    if (value_ != nullptr) {
      Give(*value_, word);
      value_ = value_->takes == Takes::REST ? value_ : nullptr;
    } else if (!isOver_ && word == "--") {
      isOver_ = true;
    } else if (!isOver_ && word.starts_with("--")) {
      ReadOption(word);
    } else if (!position_.verbs->empty()) {
      Enter(word);
    } else if (const Argument* const argument = Positional()) {
      Give(*argument, word);
    }
  }

  // The last one.
  void Look(const std::string& word) {
    position_.word = word;
    if (value_ != nullptr) {
      position_.argument = value_;
    } else if (!isOver_ && word.starts_with("--")) {
      const std::size_t equals = word.find('=');
      if (equals != std::string::npos) {
        position_.argument = Option(word.substr(0, equals));
        position_.option = word.substr(0, equals + 1);
        position_.word = word.substr(equals + 1);
      }
    } else if (position_.verbs->empty()) {
      position_.argument = Positional();
    }
  }

 private:
  template <class List>
  void Take(const List& arguments) {
    for (const Argument& argument : arguments) {
      position_.given.Add(argument.name, {});
    }
  }

  void Give(const Argument& argument, const std::string& text) {
    std::vector<std::string> texts = position_.given.Texts(argument.name);
    texts.push_back(text);
    position_.given.Add(argument.name, std::move(texts));
  }

  const Argument* Option(std::string_view name) const {
    for (const Argument* const argument : OptionsAt(program_, position_)) {
      if (IsNamed(*argument, name)) {
        return argument;
      }
    }
    return nullptr;
  }

  void ReadOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const Argument* const option = Option(word.substr(0, equals));
    if (option == nullptr) {
      return;
    }
    if (option->takes == Takes::NOTHING || equals != std::string::npos) {
      Give(*option, equals == std::string::npos ? "true" : word.substr(equals + 1));
    } else {
      value_ = option;
    }
  }

  void Enter(const std::string& word) {
    for (const Verb& verb : *position_.verbs) {
      if (verb.name == word) {
        position_.verb = &verb;
        position_.verbs = &verb.verbs;
        Take(verb.arguments);
        if (verb.choice) {
          Take(verb.choice->arguments);
        }
        return;
      }
    }
  }

  // The one that takes the next word that is no option.
  const Argument* Positional() const {
    if (position_.verb == nullptr) {
      return nullptr;
    }
    for (const Argument* const argument : ArgumentsOf(*position_.verb)) {
      const bool takesMore = argument->takes == Takes::TEXTS || argument->takes == Takes::REST;
      if (!IsOption(*argument) && (takesMore || !position_.given.Has(argument->name))) {
        return argument;
      }
    }
    return nullptr;
  }

  const Program& program_;
  Position& position_;
  const Argument* value_ = nullptr;  // the option that waits for one
  bool isOver_ = false;              // "--" was there: no options any more
};

}  // namespace

Position FindPosition(const Program& program, const std::vector<std::string>& words) {
  Position position;
  Reader reader(program, position);
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    reader.Read(words[i]);
  }
  reader.Look(words.empty() ? "" : words.back());
  return position;
}

std::vector<const Argument*> OptionsAt(const Program& program, const Position& position) {
  std::vector<const Argument*> options;
  const auto add = [&options](const Argument& argument) {
    if (IsOption(argument)) {
      options.push_back(&argument);
    }
  };
  if (position.verb != nullptr) {
    for (const Argument* const argument : ArgumentsOf(*position.verb)) {
      add(*argument);
    }
  }
  for (const Argument& argument : program.arguments) {
    add(argument);
  }
  return options;
}

}  // namespace tarnctl
