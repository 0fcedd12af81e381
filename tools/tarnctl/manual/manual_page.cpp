#include "manual/manual_page.h"

#include <algorithm>
#include <string_view>

namespace tarnctl {
namespace {

constexpr const char* kDescription =
    "The configuration of a host is kept as objects, each of one type, in a store below\n"
    ".IR /etc .\n"
    "A type has a schema; what does not fit it is refused, with every finding. A row of the store\n"
    "keeps apart what the user set, what automatic configuration set, what is vital and what is\n"
    "cached, and what waits for the next boot; reading merges them. Data is printed as JSON.";

constexpr const char* kEnding =
    ".SH EXIT STATUS\n"
    ".TP\n0\nDone.\n.TP\n1\nFailed.\n.TP\n2\nThe command line is wrong.\n.TP\n3\nNot found.\n"
    ".TP\n4\nInvalid: every finding is printed.\n"
    ".TP\n5\nNot as expected: there are differences, or somebody else was faster.\n"
    ".TP\n6\nThis user may not.\n.TP\n7\nSomebody else is at work.\n"
    ".TP\n8\nA database is damaged.\n"
    ".SH ENVIRONMENT\n"
    ".TP\n.B TARN_HOST_ROOT\nDirectory that the host's paths are resolved under; \"/\" where it "
    "is\n"
    "unset.\n"
    ".SH SEE ALSO\n.BR tarn\\-types (5),\n.BR tarnconfigstore (3)\n";

// One line of text: what man(7) would take for more than that is escaped.
std::string Escape(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n')) {
      escaped.append("\\&") += c;
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Sentence(std::string_view text) {
  std::string sentence = Escape(text);
  if (!sentence.empty() &&
      std::string_view(".:!?").find(sentence.back()) == std::string_view::npos) {
    sentence += '.';
  }
  return sentence;
}

bool IsOption(const Argument& argument) {
  return argument.name.starts_with("--");
}

bool TakesMany(const Argument& argument) {
  return argument.takes == Takes::REST || argument.takes == Takes::TEXTS;
}

std::string Describe(const Argument& argument) {
  std::string text = ".TP\n";
  if (IsOption(argument)) {
    text.append(".B ").append(Escape(argument.name));
    for (const std::string& alias : argument.aliases) {
      text.append(", ").append(Escape(alias));
    }
    if (argument.takes != Takes::NOTHING) {
      text.append(" \\fI").append(Escape(argument.valueName.empty() ? "TEXT" : argument.valueName));
      text.append("\\fR");
    }
  } else {
    text.append(".I ").append(Escape(argument.name));
  }
  text += "\n" + Sentence(argument.help);
  if (argument.range) {
    text.append(" From ").append(std::to_string(argument.range->smallest)).append(" to ");
    text.append(std::to_string(argument.range->largest)).append(".");
  }
  for (std::size_t i = 0; i < argument.excludes.size(); ++i) {
    text.append(i == 0 ? " Not with " : ", ").append(Escape(argument.excludes[i]));
  }
  return text + (argument.excludes.empty() ? "\n" : ".\n");
}

std::string Synopsis(const Argument& argument) {
  const bool isOption = IsOption(argument);
  std::string text = argument.isRequired ? "" : "[";
  text.append(isOption ? "\\fB" : "\\fI").append(Escape(argument.name)).append("\\fR");
  if (isOption && argument.takes != Takes::NOTHING) {
    text.append(" \\fI").append(Escape(argument.valueName.empty() ? "TEXT" : argument.valueName));
    text.append("\\fR");
  }
  text.append(TakesMany(argument) && !isOption ? "..." : "");
  return text.append(argument.isRequired ? "" : "]");
}

void AddVerb(const Verb& verb, const std::string& before, std::string& page) {
  if (verb.isHidden) {
    return;
  }
  const std::string name = before + verb.name;
  for (const Verb& inner : verb.verbs) {
    AddVerb(inner, name + " ", page);
  }
  if (!verb.run) {
    return;
  }
  page.append(".SS ").append(Escape(name)).append("\n.B tarnctl ").append(Escape(name));
  page += '\n';
  std::vector<Argument> arguments = verb.arguments;
  if (verb.choice) {
    arguments.insert(arguments.end(), verb.choice->arguments.begin(), verb.choice->arguments.end());
  }
  for (const Argument& argument : arguments) {
    page += Synopsis(argument) + "\n";
  }
  page.append(".PP\n").append(Sentence(verb.help)).append("\n");
  if (!verb.note.empty()) {
    page.append(Sentence(verb.note)).append("\n");
  }
  if (verb.choice) {
    page.append(verb.choice->isRequired ? "One of " : "At most one of ");
    for (std::size_t i = 0; i < verb.choice->arguments.size(); ++i) {
      page.append(i == 0 ? "" : ", ").append(Escape(verb.choice->arguments[i].name));
    }
    page += ".\n";
  }
  for (const Argument& argument : arguments) {
    page += Describe(argument);
  }
}

}  // namespace

std::string MakeManualPage(const Program& program) {
  std::string page =
      ".\\\" Made by \"tarnctl help --man\" from what the tool knows of itself.\n"
      ".TH TARNCTL 1 \"\" \"" +
      Escape(program.version) + "\" \"Tarn Config Store\"\n.SH NAME\n" +
      Escape(program.name + " - look at the host's configuration store, change it") +
      "\n.SH SYNOPSIS\n.B " + Escape(program.name) +
      "\n[\\fIOPTION\\fR]... \\fIVERB\\fR [\\fIARGUMENT\\fR]...\n"
      ".SH DESCRIPTION\n" +
      kDescription + "\n.PP\n" +
      Sentence(std::string_view(program.footer).substr(0, program.footer.find('\n'))) +
      "\n.SH OPTIONS\n";
  for (const Argument& argument : program.arguments) {
    page += Describe(argument);
  }
  page += ".SH VERBS\n";
  for (const Verb& verb : program.verbs) {
    AddVerb(verb, "", page);
  }
  return page + kEnding;
}

}  // namespace tarnctl
