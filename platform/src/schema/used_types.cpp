#include "schema/used_types.h"

#include "platform/process_locks.h"

#include "schema/loaded_type.h"
#include "schema/schema_database.h"

#include <functional>

namespace TarnSchemaStore {

using ProcessLocks::Guard;
using ProcessLocks::Rank;

namespace {

// Callers may ask for any name; what is remembered of them has an end.
constexpr std::size_t kMaxAbsent = 4096;

}  // namespace

std::size_t UsedTypes::Hash::operator()(const NameView& name) const noexcept {
  const std::hash<std::string_view> hash;
  return (hash(name.component) * 31 + hash(name.group)) * 31 + hash(name.key);
}

std::size_t UsedTypes::Hash::operator()(const TypeName& name) const noexcept {
  return (*this)(NameView{name.component, name.group, name.key});
}

bool UsedTypes::Equal::operator()(const NameView& a, const TypeName& b) const noexcept {
  return a == NameView{b.component, b.group, b.key};
}

bool UsedTypes::Find(const NameView& name, std::shared_ptr<SchemaObject>& type) const {
  const Guard guard(Rank::USED_TYPES);
  // Most ask for the type that was asked for before: comparing it is cheaper than a hash of its name.
  if (last_ == nullptr || !Equal()(name, last_->first)) {
    const auto found = types_.find(name);
    if (found == types_.end()) {
      return false;
    }
    last_ = &*found;
  }
  type = last_->second;
  return true;
}

std::vector<TypeName> UsedTypes::GetTypes() const {
  const Guard reading(Rank::SCHEMA_READING);
  return SchemaDatabase(SchemaDatabase::Access::READ).ReadAllNames();
}

std::shared_ptr<SchemaObject> UsedTypes::GetSchemaObject(const std::string& component,
                                                         const std::string& group,
                                                         const std::string& key) {
  const NameView view{component, group, key};
  std::shared_ptr<SchemaObject> type;
  if (Find(view, type)) {
    return type;
  }
  const Guard reading(Rank::SCHEMA_READING);
  if (Find(view, type)) {
    return type;
  }
  const TypeName name{component, group, key};
  const auto kept = SchemaDatabase(SchemaDatabase::Access::READ).ReadType(name);
  if (kept) {
    type = LoadedType::FromText(name, kept->text);
  }
  const Guard guard(Rank::USED_TYPES);
  if (type == nullptr && ++absent_ > kMaxAbsent) {
    return type;
  }
  types_.emplace(name, type);
  return type;
}

}  // namespace TarnSchemaStore
