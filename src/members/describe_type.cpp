#include "tarnconfigstore/explain.h"

#include "platform/logger.h"
#include "platform/type_files.h"

#include "admin/type_reports.h"
#include "errors/platform_failures.h"
#include "errors/raise.h"
#include "members/member_places.h"
#include "members/type_walk.h"
#include "objects/schema_lookup.h"

#include <vector>

namespace TarnConfigStore {
namespace {

TypeDescription Describe(const TarnSchemaStore::SchemaObject& type, const std::string& place,
                         bool reveal) {
  TypeDescription description;
  static_cast<TypeSummary&>(description) = Summarize(type);
  description.members = DescribeMembers(type, place, reveal);
  return description;
}

[[noreturn]] void Refuse(const TypeFiles::TypeFile& file) {
  std::vector<ErrorInfo> findings;
  for (const TypeFiles::Finding& finding : file.findings) {
    findings.push_back({finding.field, finding.error});
  }
  throw ValidationException(CS_GENERIC, "The type file is not valid.", findings);
}

}  // namespace

TypeDescription DescribeType(const ConfigStoreObjectId& type, const std::string& place,
                             bool reveal) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "DescribeType");
  return Describe(*RequireSchema(type), place, reveal);
}

TypeDescription DescribeTypeFile(const std::string& path, const std::string& place, bool reveal) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "DescribeTypeFile");
  const std::vector<TypeFiles::TypeFile> files = ReadTypeFiles({path});
  if (files.size() != 1) {
    ThrowArgument("\"" + path + "\" is not one type file.");
  }
  if (!files.front().Good()) {
    Refuse(files.front());
  }
  return Describe(*WithStoreFailures([&] { return TypeFiles::Load(files.front().type); }), place,
                  reveal);
}

}  // namespace TarnConfigStore
