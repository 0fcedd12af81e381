// Prints one object of a store, by hand: a program of its own, to be measured as a whole. Arguments: the
// host's root, component, group and key.
#include "platform/host_paths.h"

#include "floor_database.h"
#include "floor_export.h"
#include "floor_object.h"

#include <array>
#include <cstdio>
#include <exception>
#include <string>

namespace {

using namespace Benchmarks;

constexpr const char* kReadObject =
    "SELECT AutoConfValue, CachedValue, VitalValue, UserValue FROM Config WHERE Component = ? AND "
    "ConfigGroup = ? AND Name = ? AND Identifier = '' AND Success = 1";

void BindKey(FloorStatement& statement, char** key) {
  for (int i = 0; i < 3; ++i) {
    statement.Bind(i + 1, key[i]);
  }
}

// What is secret would have to be hidden, so the type has to be looked at.
bool HasSecrets(const std::string& root, char** key) {
  const FloorDatabase database(root + HostPaths::kSchemaStore, FloorDatabase::Access::READ,
                               kSchemaStoreMark, kSchemaStoreLayout);
  FloorStatement statement(database, kReadType);
  BindKey(statement, key);
  if (!statement.Step()) {
    return true;
  }
  const std::string_view text = statement.Text(0);
  FloorObject::Make({}, text);
  return text.find("\"secret\"") != std::string_view::npos;
}

bool Print(const std::string& root, char** key) {
  const FloorDatabase database(root + HostPaths::kStore, FloorDatabase::Access::READ, kStoreMark,
                               kStoreLayout);
  FloorStatement statement(database, kReadObject);
  BindKey(statement, key);
  if (HasSecrets(root, key) || !statement.Step()) {
    return false;
  }
  const std::array<std::string_view, 4> layers = {statement.Text(0), statement.Text(1),
                                                  statement.Text(2), statement.Text(3)};
  TextMaker compact;
  TextMaker indented;
  PutIndented(indented, compact.Make(FloorObject::Make({}, layers)->Data()));
  indented.Put('\n');
  return std::fwrite(indented.Text().data(), 1, indented.Size(), stdout) == indented.Size();
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kArguments = 5;
  try {
    return argc == kArguments && Print(argv[1], argv + 2) ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
