// Putting types into the schema store without judging them.
#pragma once

#include "platform/type_files.h"

namespace TestSupport {

/// A type file around a schema's text.
inline std::string TypeText(const std::string& key, const std::string& schema,
                            const std::string& version = "1.0") {
  return R"({"component":"tarn","group":"test","key":")" + key + R"(","version":")" + version +
         R"(","schema":)" + schema + "}";
}

inline void KeepType(const std::string& key, const std::string& schema,
                     const std::string& version = "1.0") {
  TypeFiles::TypeWriter writer;
  writer.Put({{"tarn", "test", key}, version, TypeText(key, schema, version)});
  writer.Commit();
}

}  // namespace TestSupport
