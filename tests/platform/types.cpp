// The schema store: types by host root, in memory. A change makes a new set of all types; those who
// use the old one keep it.
#include "platform/host_paths.h"
#include "platform/type_files.h"

#include "schema/loaded_type.h"
#include "store.h"

#include <map>
#include <stdexcept>

namespace TarnSchemaStore {
namespace {

using TypeFiles::KeptType;

struct Entry {
  KeptType kept;
  std::shared_ptr<SchemaObject> type;
};

class Types final : public SchemaStore, public SchemaObjectCache {
 public:
  std::vector<TypeName> GetTypes() const override {
    std::vector<TypeName> names;
    for (const auto& [name, entry] : entries) {
      names.push_back(name);
    }
    return names;
  }
  std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                const std::string& group,
                                                const std::string& key) override {
    const auto found = entries.find({component, group, key});
    return found == entries.end() ? nullptr : found->second.type;
  }
  std::optional<KeptType> Kept(const TypeName& name) const {
    const auto found = entries.find(name);
    return found == entries.end() ? std::nullopt : std::optional(found->second.kept);
  }

  std::map<TypeName, Entry> entries;
};

std::mutex currentLock;
auto& current = *new std::map<std::string, std::shared_ptr<Types>>;

std::shared_ptr<Types> CurrentTypes() {
  // A store that was never made must not look like one without types.
  if (DBStore::internal::CurrentStore() == nullptr) {
    DBStore::internal::Fail(SQLITE_CANTOPEN, "no schema store was made");
    throw std::runtime_error("The schema store cannot be opened: none was made.");
  }
  const std::lock_guard guard(currentLock);
  std::shared_ptr<Types>& types = current[HostPaths::GetRoot()];
  return types = types ? types : std::make_shared<Types>();
}

}  // namespace

std::shared_ptr<SchemaStore> SchemaStore::GetStore(bool /*flag*/) {
  return CurrentTypes();
}

std::shared_ptr<SchemaObjectCache> SchemaStore::GetCache() {
  return CurrentTypes();
}

}  // namespace TarnSchemaStore

namespace TypeFiles {

using namespace TarnSchemaStore;

namespace {
std::mutex writing;
}

std::shared_ptr<SchemaObject> Load(const KeptType& type) {
  return LoadedType::FromText(type.name, type.text);
}

std::vector<KeptType> ReadAll() {
  std::vector<KeptType> kept;
  for (const auto& [name, entry] : CurrentTypes()->entries) {
    kept.push_back(entry.kept);
  }
  return kept;
}

std::optional<KeptType> Read(const TypeName& name) {
  return CurrentTypes()->Kept(name);
}

struct TypeWriter::State {
  const std::lock_guard<std::mutex> lock{writing};
  std::shared_ptr<Types> next = std::make_shared<Types>(*CurrentTypes());
};

TypeWriter::TypeWriter() : state_(std::make_unique<State>()) {}

TypeWriter::~TypeWriter() = default;

std::optional<KeptType> TypeWriter::Read(const TypeName& name) {
  return state_->next->Kept(name);
}

void TypeWriter::Put(const KeptType& type) {
  state_->next->entries[type.name] = {type, Load(type)};
}

void TypeWriter::Remove(const TypeName& name) {
  state_->next->entries.erase(name);
}

void TypeWriter::Commit() {
  const std::lock_guard guard(currentLock);
  current[HostPaths::GetRoot()] = state_->next;
}

}  // namespace TypeFiles
