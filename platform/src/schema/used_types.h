// The types that a process has used so far.
#pragma once

#include "platform/schema_store.h"

#include <atomic>
#include <string_view>
#include <unordered_map>

namespace TarnSchemaStore {

/// The types of the schema store as it was at one moment; a change of the store is answered with a
/// new one of these. Each type is read on its first use, and one that is not there is remembered
/// too.
class UsedTypes final : public SchemaObjectCache {
 public:
  std::vector<TypeName> GetTypes() const override;
  std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                const std::string& group,
                                                const std::string& key) override;

  /// True once a type was asked for that is not there.
  bool KnowsOfAbsentTypes() const noexcept { return absent_.load(std::memory_order_relaxed) != 0; }

 private:
  // Names a type without owning the texts, so that looking one up copies nothing.
  struct NameView {
    std::string_view component;
    std::string_view group;
    std::string_view key;
    friend bool operator==(const NameView&, const NameView&) = default;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(const NameView& name) const noexcept;
    std::size_t operator()(const TypeName& name) const noexcept;
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const TypeName& a, const TypeName& b) const noexcept { return a == b; }
    bool operator()(const NameView& a, const TypeName& b) const noexcept;
    bool operator()(const TypeName& a, const NameView& b) const noexcept { return (*this)(b, a); }
  };

  bool Find(const NameView& name, std::shared_ptr<SchemaObject>& type) const;

  using Types = std::unordered_map<TypeName, std::shared_ptr<SchemaObject>, Hash, Equal>;

  Types types_;                                      // nothing is taken out of it
  mutable const Types::value_type* last_ = nullptr;  // of them, found last
  std::atomic<std::size_t> absent_ = 0;
};

/// Makes the next look-up look at the schema store's file again. Called by whoever has changed it.
void ForgetCurrentTypes() noexcept;

}  // namespace TarnSchemaStore
