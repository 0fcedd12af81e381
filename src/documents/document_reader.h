// What a document's form is, section by section.
#pragma once

#include "documents/config_document.h"
#include "json/json.h"

#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace TarnConfigStore {

/// Fills a document from its value. One use.
class DocumentReader {
 public:
  explicit DocumentReader(ConfigDocument& document);
  void Read(const Json::Value& root);

 private:
  // Of a section: gets each type's value, with its identifier and pointer.
  using TypeVisitor = std::function<void(const ConfigStoreObjectId& type, const Json::Value& value,
                                         const std::string& pointer)>;

  void CheckFormat(const Json::Value& root);
  void CheckMembers(const Json::Value& root);
  void ReadMetadata(const Json::Value& metadata);
  void ReadParts(const Json::Value& parts);
  void ReadRedacted(const Json::Value& redacted);
  void ReadInfo(const ConfigStoreObjectId& type, const Json::Value& value,
                const std::string& pointer);
  void ReadOneInfo(const ConfigStoreObjectId& type, const Json::Value& value,
                   const std::string& pointer);
  void ReadSections(const Json::Value& root);
  void ReadType(Section section, const ConfigStoreObjectId& type, const Json::Value& value,
                const std::string& pointer);
  void ReadInstances(Section section, NamedType& type, const Json::Value& list,
                     const std::string& pointer);
  void ReadStaged(const ConfigStoreObjectId& type, const Json::Value& value,
                  const std::string& pointer);
  void ReadChange(const ConfigStoreObjectId& type, const Json::Value& value,
                  const std::string& pointer);

  void ForEachType(const Json::Value& section, const std::string& pointer,
                   const TypeVisitor& visit);
  NamedType& TypeOf(const ConfigStoreObjectId& id);
  void Add(std::string field, std::string error);

  ConfigDocument& document_;
  SchemaCacheHandle schemas_;
  std::unordered_map<ConfigStoreObjectId, std::size_t> types_;
  std::unordered_set<ConfigStoreObjectId> informed_;  // what metadata has something of
  std::unordered_set<ConfigStoreObjectId> staged_;    // what has a record
};

}  // namespace TarnConfigStore
