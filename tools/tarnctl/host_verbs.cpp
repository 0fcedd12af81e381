#include "host_verbs.h"

#include "tarnconfigstore/host.h"
#include "tarnconfigstore/key_values.h"

#include <cstdio>

namespace tarnctl {

void InitializeHost(const Output& output) {
  const auto made = TarnConfigStore::InitializeHost();
  for (const std::string& path : made.unchanged) {
    std::fprintf(stderr, "tarnctl: %s exists and is left as it is\n", path.c_str());
  }
  output.Print({{"store", made.storePath},
                {"schemaStore", made.schemaStorePath},
                {"created", made.created},
                {"unchanged", made.unchanged}});
}

void GetEntry(const std::string& key, const Output& output) {
  output.PrintMember(TarnConfigStore::GetKeyValue(key));
}

void SetEntry(const std::string& key, const std::string& value) {
  TarnConfigStore::SetKeyValue(key, value);
}

}  // namespace tarnctl
