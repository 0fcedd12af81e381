#include "tarnconfigstore/explain.h"

#include "failure.h"
#include "given/object_name.h"
#include "given/part_name.h"
#include "shown/member_json.h"
#include "shown/member_text.h"
#include "store/stored_objects.h"
#include "store/type_schema.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::ObjectExplanation;
using TarnConfigStore::TypeDescription;

[[noreturn]] void RaiseNoMember(const std::string& of, const std::string& place,
                                const std::string& suggestion) {
  throw ToolError(ExitCode::NOT_FOUND,
                  of + " has no member \"" + ShownPlace(place) + "\"" + suggestion);
}

void PrintExplanation(const Given& given, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const std::string place = ParsePlaceNameIfGiven(given.Text(kMember));
  RequireStore();
  const ObjectExplanation object = TarnConfigStore::ExplainObject(id, place, Reveals(given));
  if (object.members.empty() && !place.empty()) {
    RaiseNoMember("the object " + FormatObject(id), place,
                  TypeSchema(id).Suggest(ParsePlace(place)));
  }
  if (!output.AsData()) {
    output.PrintText(ExplainPage(object));
    return;
  }
  JsonMaker make;
  output.Print(DescribeExplanation(object, make));
}

TypeDescription ReadDescription(const Given& given, const ConfigStoreObjectId& type,
                                const std::string& place) {
  if (!given.Has(kFrom)) {
    return TarnConfigStore::DescribeType(type, place, Reveals(given));
  }
  const std::string& file = given.Text(kFrom);
  TypeDescription described = TarnConfigStore::DescribeTypeFile(file, place, Reveals(given));
  const ConfigStoreObjectId found(described.key, described.group, described.component);
  if (found != type) {
    throw ToolError(ExitCode::NOT_FOUND, file + " describes the type " + FormatObject(found) +
                                             ", not " + FormatObject(type));
  }
  return described;
}

void PrintDescription(const Given& given, const Output& output) {
  const ConfigStoreObjectId type = ParseType(given.Text(kType));
  const std::string place = ParsePlaceNameIfGiven(given.Text(kMember));
  const TypeDescription described = ReadDescription(given, type, place);
  if (described.members.empty() && !place.empty()) {
    RaiseNoMember("the type " + FormatObject(type), place,
                  given.Has(kFrom) ? "" : TypeSchema(type).Suggest(ParsePlace(place)));
  }
  if (!output.AsData()) {
    output.PrintText(DescribePage(described));
    return;
  }
  JsonMaker make;
  output.Print(DescribeType(described, make));
}

Argument PlaceArgument() {
  return {.name = kMember, .help = kPlaceHelp};
}

}  // namespace

Verb ExplainVerb() {
  return {.name = "explain",
          .help = "Show of each member of an object what is read, who set it, and what if not",
          .arguments = {ObjectArgument(), PlaceArgument(), RevealArgument()},
          .note =
              "Shows the parts that a value comes from and those that it hides, the default, "
              "what the type allows, and what the next boot brings.",
          .run = PrintExplanation};
}

Verb DescribeVerb() {
  return {
      .name = "describe",
      .help = "Show what a type says of its members",
      .arguments = {TypeArgument(),
                    {.name = kMember, .help = std::string(kPlaceHelp) + ", or * for each element"},
                    {.name = kFrom,
                     .help = "Read the type from a type file; no host is needed then",
                     .valueName = "FILE"},
                    RevealArgument()},
      .run = PrintDescription};
}

}  // namespace tarnctl
