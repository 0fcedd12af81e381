// The schema store: types by host root, in memory. A change makes a new set of all types; those who
// use the old one keep it.
#include "platform/host_paths.h"
#include "platform/type_files.h"

#include "schema/type_documents.h"
#include "store.h"

#include <map>
#include <stdexcept>

namespace TarnSchemaStore {
namespace {

using TarnConfigStore::JsonDoc;
using TypeFiles::KeptType;

struct TypeDocument {
  explicit TypeDocument(const KeptType& its) : type(its) {
    if (!file.Parse(type.text, Json::Origin::OUTSIDE) ||
        Json::FindMember(*file.GetJsonValuePtr(), "schema") == nullptr) {
      throw std::runtime_error("The text of type " + type.name.key + " is damaged.");
    }
    view = std::make_unique<const Json::TypeSchemaView>((*file.GetJsonValuePtr())["schema"]);
    valueType = Has("shared") ? "tarn-shared" : "tarn";
  }
  bool Has(const char* keyword) const { return Json::IsTrue(view->Schema(), keyword); }

  KeptType type;
  std::string valueType;
  JsonDoc file;
  std::unique_ptr<const Json::TypeSchemaView> view;
};

// A type, or a property of one looked at as a type of its own; both keep the document alive.
class MemoryType final : public SchemaObject {
 public:
  MemoryType(std::shared_ptr<const TypeDocument> document, std::string key, Json::SchemaPlace place,
             std::string_view idMember)
      : document_(std::move(document)),
        key_(std::move(key)),
        place_(place),
        nonSingleton_(!idMember.empty()),
        idMap_(MakeIdMap(place, key_, idMember)),
        defaults_(MakeDefaults(place)) {
    place_.ForEachProperty(
        [this](std::string_view name, Json::SchemaPlace) { names_.emplace_back(name); });
  }

  const std::string& GetComponent() const override { return document_->type.name.component; }
  const std::string& GetGroup() const override { return document_->type.name.group; }
  const std::string& GetKey() const override { return key_; }
  const Json::Value& GetSchemaDocument() const override { return *place_.Schema(); }
  std::shared_ptr<SchemaObject> GetPropertySchema(const std::string& key) const override {
    const Json::SchemaPlace property = place_.Property(key);
    const Json::SchemaPlace items = property.Items();
    const Json::SchemaPlace objects = items ? items : property;
    return objects.DescribesObject()
               ? std::make_shared<MemoryType>(document_, key, objects, items.InstanceIdMember())
               : nullptr;
  }
  const Json::Value* GetPropertyValueSchema(const std::string& key) const override {
    return place_.Property(key).Schema();
  }
  const std::string& GetVersion() const override { return document_->type.version; }
  std::shared_ptr<JsonDoc> GetIdMap() const override { return idMap_; }
  std::shared_ptr<JsonDoc> GetDefaults() const override { return defaults_; }
  const std::string& GetValueType() const override { return document_->valueType; }
  bool IsVital() const override { return place_.OwnKind() == Json::Kind::VITAL; }
  bool IsCached() const override { return place_.OwnKind() == Json::Kind::CACHED; }
  bool IsBootAccessible() const override { return document_->Has("bootAccessible"); }
  bool IsRebootRequired() const override { return document_->Has("rebootRequired"); }
  int GetConfigType() const override {
    const unsigned kinds = place_.Kinds();  // by the bits of Json::Kind
    return kinds == 1   ? CONFIG_USER
           : kinds == 2 ? CONFIG_VITAL
           : kinds == 4 ? CONFIG_CACHED
           : kinds == 6 ? CONFIG_VITAL_AND_CACHED
                        : CONFIG_MIXED;
  }
  bool IsNonSingleton() const override { return nonSingleton_; }
  bool IsConfirmedDuringUpgrade() const override {
    return document_->Has("confirmedDuringUpgrade");
  }
  const std::vector<std::string>& GetPropertyNames() const override { return names_; }
  Json::SchemaPlace GetSchemaPlace() const override { return place_; }
  const KeptType& Kept() const { return document_->type; }

 private:
  std::shared_ptr<const TypeDocument> document_;
  std::string key_;
  Json::SchemaPlace place_;
  bool nonSingleton_;
  std::vector<std::string> names_;
  std::shared_ptr<JsonDoc> idMap_;
  std::shared_ptr<JsonDoc> defaults_;
};

using TypeHandle = std::shared_ptr<MemoryType>;

TypeHandle MakeType(const KeptType& type) {
  const auto document = std::make_shared<const TypeDocument>(type);
  const Json::SchemaPlace root = document->view->Root();
  return std::make_shared<MemoryType>(document, type.name.key, root, root.InstanceIdMember());
}

class Types final : public SchemaStore, public SchemaObjectCache {
 public:
  std::vector<TypeName> GetTypes() const override {
    std::vector<TypeName> names;
    for (const auto& [name, type] : All()) {
      names.push_back(name);
    }
    return names;
  }
  std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                const std::string& group,
                                                const std::string& key) override {
    return Find({component, group, key});
  }
  TypeHandle Find(const TypeName& name) const {
    const auto found = All().find(name);
    return found == types.end() ? nullptr : found->second;
  }
  std::optional<KeptType> Kept(const TypeName& name) const {
    const TypeHandle type = Find(name);
    return type ? std::optional(type->Kept()) : std::nullopt;
  }
  // A store that was never made must not look like one without types.
  const std::map<TypeName, TypeHandle>& All() const {
    if (DBStore::internal::CurrentStore() == nullptr) {
      DBStore::internal::Fail(SQLITE_CANTOPEN, "no schema store was made");
      throw std::runtime_error("The schema store cannot be opened: none was made.");
    }
    return types;
  }

  std::map<TypeName, TypeHandle> types;
};

std::mutex currentLock;
auto& current = *new std::map<std::string, std::shared_ptr<Types>>;

std::shared_ptr<Types> CurrentTypes() {
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
  return MakeType(type);
}

std::vector<KeptType> ReadAll() {
  std::vector<KeptType> kept;
  for (const auto& [name, type] : CurrentTypes()->All()) {
    kept.push_back(type->Kept());
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

TypeWriter::TypeWriter() : state_(std::make_unique<State>()) {
  state_->next->All();
}

TypeWriter::~TypeWriter() = default;

std::optional<KeptType> TypeWriter::Read(const TypeName& name) {
  return state_->next->Kept(name);
}

void TypeWriter::Put(const KeptType& type) {
  state_->next->types[type.name] = MakeType(type);
}

void TypeWriter::Remove(const TypeName& name) {
  state_->next->types.erase(name);
}

void TypeWriter::Commit() {
  const std::lock_guard guard(currentLock);
  current[HostPaths::GetRoot()] = state_->next;
}

}  // namespace TypeFiles
