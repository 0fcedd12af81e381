// Putting types into the schema store without judging them.
#pragma once

#include "platform/type_files.h"

#include <stdexcept>
#include <string>

namespace TestSupport {

/// A type file around a schema's text.
inline std::string TypeText(const std::string& key, const std::string& schema,
                            const std::string& version = "1.0") {
  return R"({"component":"tarn","group":"test","key":")" + key + R"(","version":")" + version +
         R"(","schema":)" + schema + "}";
}

inline void KeepType(const std::string& key, const std::string& schema,
                     const std::string& version = "1.0") {
  TypeFiles::TypeFile file;
  file.name = {"tarn", "test", key};
  file.version = version;
  file.text = TypeText(key, schema, version);
  file.document = std::make_shared<TarnConfigStore::JsonDoc>();
  if (!file.document->Parse(schema, Json::Duplicates::REFUSE)) {
    throw std::invalid_argument("not JSON: " + schema);
  }
  file.schema = file.document->GetJsonValuePtr();
  TypeFiles::TypeWriter writer;
  writer.Put(file);
  writer.Commit();
}

}  // namespace TestSupport
