#include "tarnconfigstore/listing.h"

#include "descriptions.h"
#include "failure.h"
#include "member_values.h"
#include "stored_objects.h"
#include "verbs.h"

#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

constexpr const char* kDefault = "--default";
constexpr const char* kOutdated = "--outdated";

std::shared_ptr<ConfigStoreObject> ReadStored(const ConfigStoreObjectId& id) {
  auto stored = OpenStore()->Get(id);
  if (!stored) {
    RaiseNotStored(id);
  }
  return stored;
}

std::shared_ptr<ConfigStoreObject> ReadShipped(const ConfigStoreObjectId& id) {
  auto shipped = OpenStore()->GetDefaultConfig(id);
  if (!shipped) {
    throw ToolError(ExitCode::NOT_FOUND, "no object " + FormatObject(id) + " is shipped");
  }
  return shipped;
}

void GetObject(const Given& given, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const MemberPath member = ParseMemberIfGiven(given.Text(kMember));
  PrintObject(*(given.Has(kDefault) ? ReadShipped(id) : ReadStored(id)), member, output);
}

void GetInstances(const Given& given, const Output& output) {
  const ConfigStoreObjectId type = ParseType(given.Text(kObject));
  const auto store = OpenStore();
  const auto filter = MakeFilter(type, given.Texts(kWhere));
  PrintObjects(
      given.Has(kDefault) ? store->GetDefaultConfigInstances(filter) : store->GetInstances(filter),
      output);
}

void List(const Given& given, const Output& output) {
  const ConfigStoreObjectId prefix = ParsePrefixIfGiven(given.Text(kPrefix));
  if (given.Has(kOutdated)) {
    JsonMaker make;
    output.Print(make.List(
        TarnConfigStore::ListOutdated(prefix),
        [&](const TarnConfigStore::OutdatedObject& object) { return Describe(object, make); }));
    return;
  }
  ListPrinter printer(output);
  TarnConfigStore::VisitStored(prefix, [&](const TarnConfigStore::StoredObject& object) {
    JsonMaker make;
    printer.Add(Describe(object, make));
  });
  printer.End();
}

void ShowRevisions(const Given& given, const Output& output) {
  const ConfigStoreObjectId type = ParseType(given.Text(kObject));
  JsonMaker make;
  Json::Value revisions(rapidjson::kObjectType);
  for (const auto& [id, revision] : OpenStore()->GetInstancesRevision(type)) {
    revisions.AddMember(make.Of(id), JsonMaker::Of(revision), make.GetAllocator());
  }
  output.PrintLenient(revisions);  // ids may be older than what is asked of them today
}

void ShowRevision(const Given& given, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  const std::int32_t revision = OpenStore()->GetRevision(id);
  if (revision == TarnConfigStore::kDefaultRevision) {
    RaiseNotStored(id);
  }
  output.PrintMember(JsonMaker::Of(revision));
}

}  // namespace

Verb GetVerb() {
  Verb verb{.name = "get",
            .help = "Print an object, a member of it, or instances",
            .arguments = ReadArguments(),
            .run = [](const Given& given, const Output& output) {
              (MeansInstances(given) ? GetInstances : GetObject)(given, output);
            }};
  verb.arguments.push_back({.name = kDefault,
                            .help = "What the type came with, not what is stored",
                            .takes = Takes::NOTHING});
  return verb;
}

Verb ListVerb() {
  return {.name = "list",
          .help = "List the stored objects",
          .arguments = {PrefixArgument(),
                        {.name = kOutdated,
                         .help = "Only those last written under another version of their type",
                         .takes = Takes::NOTHING}},
          .run = List};
}

Verb RevisionVerb() {
  return {.name = "revision",
          .help = "Print the number of writes of an object",
          .arguments = {{.name = kObject,
                         .help = std::string("A TYPE with ") + kAllInstances,
                         .isRequired = true},
                        {.name = kAllInstances,
                         .help = "Of each instance of a type, by its id",
                         .takes = Takes::NOTHING}},
          .run = [](const Given& given, const Output& output) {
            (given.Has(kAllInstances) ? ShowRevisions : ShowRevision)(given, output);
          }};
}

}  // namespace tarnctl
