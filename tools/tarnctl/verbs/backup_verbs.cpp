#include "tarnconfigstore/backup.h"

#include "failure.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

using TarnConfigStore::BackupContent;

void AddContent(const BackupContent& content, Json::Value& to, JsonMaker& make) {
  const auto number = [](std::uint64_t value) { return Json::Value(value); };
  make.Add(to, "backupTime", content.creationTime);
  make.Add(to, "objects", number(content.objects));
  make.Add(to, "types", number(content.types));
  make.Add(to, "storeLayout", content.storeLayout);
  make.Add(to, "schemaStoreLayout", content.schemaStoreLayout);
}

void Backup(const Given& given, const Output& output) {
  const auto written =
      TarnConfigStore::BackupHost(given.Text(kFile), {.replace = given.Has(kReplace)});
  JsonMaker make;
  Json::Value result = make.Object("path", written.path, "bytes", Json::Value(written.bytes));
  AddContent(written.content, result, make);
  output.PrintLenient(result);
}

void Restore(const Given& given, const Output& output) {
  const auto restored =
      TarnConfigStore::RestoreHost(given.Text(kFile), {.force = given.Has(kForce)});
  for (const std::string& path : restored.outdated) {
    Say(path + " has the tables of an older version and is used as it is; `init` brings it over");
  }
  JsonMaker make;
  Json::Value result =
      make.Object("store", restored.storePath, "schemaStore", restored.schemaStorePath, "created",
                  restored.created, "replaced", restored.replaced, "outdated", restored.outdated);
  AddContent(restored.content, result, make);
  output.PrintLenient(result);
}

}  // namespace

Verb BackupVerb() {
  return {
      .name = "backup",
      .help = "Write the store and the types of one moment into a file",
      .arguments = {{.name = kFile, .isRequired = true},
                    Flag(kReplace, "Take the place of a file that is there")},
      .note = "Others may read and write meanwhile. The file has mode 0600: it holds every secret.",
      .run = Backup};
}

Verb RestoreVerb() {
  return {.name = "restore",
          .help = "Make the store and the types what they were when a backup was written",
          .arguments = {{.name = kFile, .isRequired = true},
                        Flag(kForce, "Also over a store that is there, whose content is lost")},
          .note = "Both change, or neither. Programs that have the store open see the new content.",
          .run = Restore,
          .writes = true};
}

}  // namespace tarnctl
