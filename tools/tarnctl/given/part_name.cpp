#include "given/part_name.h"

#include "failure.h"
#include "given/object_name.h"

#include <utility>

namespace tarnctl {

using TarnConfigStore::ConfigPart;

Argument PartArgument(std::string help) {
  return {.name = kPart, .help = std::move(help), .valueName = "user|automatic|vital|cached"};
}

std::optional<ConfigPart> PartOf(const Given& given) {
  if (!given.Has(kPart)) {
    return std::nullopt;
  }
  for (const ConfigPart part :
       {ConfigPart::USER, ConfigPart::AUTOMATIC, ConfigPart::VITAL, ConfigPart::CACHED}) {
    if (given.Text(kPart) == TarnConfigStore::NameOf(part)) {
      return part;
    }
  }
  throw ToolError(ExitCode::USAGE,
                  "\"" + given.Text(kPart) + "\" is no part: user, automatic, vital or cached");
}

std::string ParsePlaceName(const std::string& text) {
  if (text.find('/') != std::string::npos) {
    std::string pointer = text.front() == '/' ? text : "/" + text;
    ParsePlace(pointer);
    return pointer;
  }
  return PointerTo(ParseMember(text));
}

std::string ParsePlaceNameIfGiven(const std::string& text) {
  return text.empty() ? std::string() : ParsePlaceName(text);
}

std::string ShownPlace(const std::string& pointer) {
  return pointer.empty() ? "/" : pointer.substr(1);
}

}  // namespace tarnctl
