#include "tarnconfigstore/type_administration.h"

#include "codegen/cpp_header.h"
#include "failure.h"
#include "given/input_file.h"
#include "given/object_name.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"
#include "whole_file.h"

namespace tarnctl {
namespace {

constexpr const char* kHeader = "--output";
constexpr const char* kNamespace = "--namespace";

// A file that the library would not install describes no type.
Json::Value CheckedTypeFile(const std::string& path, JsonMaker& make) {
  Findings findings;
  for (const auto& report : TarnConfigStore::CheckTypes({path})) {
    for (const auto& error : report.errors) {
      findings.push_back({report.path + "#" + error.field, error.error});
    }
  }
  if (!findings.empty()) {
    throw ToolError(ExitCode::INVALID, path + " is no type file", TarnConfigStore::CS_GENERIC,
                    std::move(findings));
  }
  return make.Parse(ReadInput(path));
}

Json::Value InstalledTypeFile(const std::string& type, JsonMaker& make) {
  const auto id = ParseType(type);
  RequireStore();
  return make.Parse(TarnConfigStore::GetTypeFile(id.component, id.group, id.key));
}

void GenerateCpp(const Given& given, const Output& output) {
  const std::string& type = given.Text(kType);
  if (type.empty() == given.Text(kFrom).empty()) {
    throw ToolError(ExitCode::USAGE, std::string("give either a TYPE or ") + kFrom + " FILE");
  }
  if (given.Has(kHeader) && given.Text(kHeader).empty()) {  // an unset variable
    throw ToolError(ExitCode::USAGE, std::string(kHeader) + " takes the name of a file");
  }
  JsonMaker make;
  const Json::Value typeFile =
      type.empty() ? CheckedTypeFile(given.Text(kFrom), make) : InstalledTypeFile(type, make);
  const std::string header = MakeCppHeader(typeFile, given.Text(kNamespace));
  if (!given.Has(kHeader) || given.Text(kHeader) == "-") {
    output.PrintText(header);
    return;
  }
  WholeFile file(given.Text(kHeader), WholeFile::Readers::ALL);
  file.Write(header);
  file.Commit();
}

}  // namespace

Verb GenerateCppVerb() {
  Argument type = TypeArgument();
  type.isRequired = false;
  type.help = "An installed type";
  return {.name = "generate-cpp",
          .help = "Write a C++ header with typed accessors for the members of a type",
          .arguments = {type,
                        {.name = kFrom,
                         .help = "The type in this type file, without a store",
                         .valueName = "FILE"},
                        {.name = kHeader,
                         .help = "Write to this file, as a whole or not at all",
                         .valueName = "FILE",
                         .aliases = {"-o"}},
                        {.name = kNamespace,
                         .help = "The namespace; TarnTypes::Component::Group where none is given",
                         .valueName = "A::B"}},
          .run = GenerateCpp};
}

}  // namespace tarnctl
