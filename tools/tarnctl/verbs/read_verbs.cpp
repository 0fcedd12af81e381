#include "tarnconfigstore/listing.h"

#include "failure.h"
#include "shown/descriptions.h"
#include "store/stored_objects.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;

constexpr const char* kOutdated = "--outdated";

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

Verb ListVerb() {
  return {
      .name = "list",
      .help = "List the stored objects",
      .arguments = {PrefixArgument(),
                    Flag(kOutdated, "Only those last written under another version of their type")},
      .run = List};
}

Verb RevisionVerb() {
  return {.name = "revision",
          .help = "Print the number of writes of an object",
          .arguments = {{.name = kObject,
                         .help = std::string("A TYPE with ") + kAllInstances,
                         .isRequired = true},
                        Flag(kAllInstances, "Of each instance of a type, by its id")},
          .run = [](const Given& given, const Output& output) {
            (given.Has(kAllInstances) ? ShowRevisions : ShowRevision)(given, output);
          }};
}

}  // namespace tarnctl
