#include "tarnconfigstore/host.h"
#include "tarnconfigstore/key_values.h"

#include "failure.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

constexpr const char* kValue = "VALUE";

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

// An entry that is absent reads as an empty text.
void GetEntry(const Given& given, const Output& output) {
  JsonMaker make;
  output.PrintMember(make.Of(TarnConfigStore::GetKeyValue(given.Text(kKey))));
}

void SetEntry(const Given& given, const Output& /*output*/) {
  TarnConfigStore::SetKeyValue(given.Text(kKey), given.Text(kValue));
}

}  // namespace

Verb InitVerb() {
  return {
      .name = "init", .help = "Make the directories and databases of the store", .run = Initialize};
}

Verb EntryVerbs() {
  const Argument key{.name = kKey, .isRequired = true};
  return {.name = "kv",
          .help = "Read and write the key/value entries",
          .verbs = {{.name = "get",
                     .help = "Print an entry; nothing when it is absent",
                     .arguments = {key},
                     .run = GetEntry},
                    {.name = "set",
                     .help = "Create or replace an entry",
                     .arguments = {key, {.name = kValue, .isRequired = true}},
                     .run = SetEntry}}};
}

}  // namespace tarnctl
