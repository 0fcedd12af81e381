#include "tarnconfigstore/listing.h"

#include "failure.h"
#include "shown/descriptions.h"
#include "store/stored_objects.h"
#include "table/record_list.h"
#include "verbs/verbs.h"

#include <algorithm>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;

constexpr const char* kOutdated = "--outdated";

Columns ColumnsOf(bool outdated) {
  Columns columns = {{"object"},       {"version", outdated}, {"revision"}, {"creationTime", false},
                     {"modifiedTime"}, {"confirmed"},         {"values"}};
  if (outdated) {
    columns.push_back({"installedVersion"});
  }
  return columns;
}

void List(const Given& given, const Output& output) {
  const ConfigStoreObjectId prefix = ParsePrefixIfGiven(given.Text(kPrefix));
  RecordList list(given, output, ColumnsOf(given.Has(kOutdated)));
  const auto add = [&list](const auto& object) {
    JsonMaker make;
    list.Add(Describe(object, make));
  };
  if (given.Has(kOutdated)) {
    const auto outdated = TarnConfigStore::ListOutdated(prefix);
    std::for_each(outdated.begin(), outdated.end(), add);
  } else {
    TarnConfigStore::VisitStored(prefix, add);
  }
  list.End();
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
                    Flag(kOutdated, "Only those last written under another version of their type"),
                    ColumnsArgument(NamesOf(ColumnsOf(false)) +
                                    " and, with --outdated, installedVersion")},
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
