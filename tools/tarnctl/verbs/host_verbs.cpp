#include "tarnconfigstore/host.h"

#include "failure.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

void Initialize(const Given& /*given*/, const Output& output) {
  const auto made = TarnConfigStore::InitializeHost();
  for (const std::string& path : made.unchanged) {
    Say(path + " exists and is left as it is");
  }
  for (const std::string& path : made.upgraded) {
    Say(path + " has the tables of this version now; older ones can't open it any more");
  }
  JsonMaker make;
  output.PrintLenient(make.Object("store", made.storePath, "schemaStore", made.schemaStorePath,
                                  "created", made.created, "upgraded", made.upgraded, "unchanged",
                                  made.unchanged));
}

}  // namespace

Verb InitVerb() {
  return {.name = "init",
          .help = "Make the directories and databases of the store",
          .run = Initialize,
          .writes = true};
}

}  // namespace tarnctl
