#include "given_object.h"

#include "json/pointer.h"
#include "json/print.h"
#include "left_out.h"
#include "member_values.h"
#include "stored_objects.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <system_error>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

[[noreturn]] void RaiseUnreadable(const std::string& path, int error) {
  throw ToolError(ExitCode::FAILED,
                  "cannot read " + (path == "-" ? std::string("standard input") : path) + ": " +
                      std::generic_category().message(error),
                  TarnConfigStore::CS_JSON_FILE_FAILED);
}

std::string ReadAll(std::FILE* stream, const std::string& path) {
  std::string text;
  std::array<char, 16384> block;
  while (const std::size_t length = std::fread(block.data(), 1, block.size(), stream)) {
    text.append(block.data(), length);
  }
  if (std::ferror(stream) != 0) {
    RaiseUnreadable(path, errno);
  }
  return text;
}

struct CloseFile {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

std::string ReadInput(const std::string& path) {
  if (path == "-") {
    return ReadAll(stdin, path);
  }
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  if (!file) {
    RaiseUnreadable(path, errno);
  }
  return ReadAll(file.get(), path);
}

/// The text of an object's data, known to be a JSON object. The text itself goes to the library.
std::string ReadData(const std::string& path) {
  std::string text = ReadInput(path);
  Json::Document data;
  const auto parsed = Json::Parse(text, data, Json::Origin::OUTSIDE);
  if (parsed && data.IsObject()) {
    return text;
  }
  throw ToolError(ExitCode::INVALID, "the data does not describe an object",
                  TarnConfigStore::CS_JSON_PARSE_FAILED,
                  {{"/", parsed ? "is no JSON object" : parsed.Describe(text)}});
}

bool IsFile(const std::vector<std::string>& data) {
  return data.size() == 1 && data.front().find('=') == std::string::npos;
}

std::shared_ptr<ConfigStoreObject> CollectMembers(const ConfigStoreObjectId& id,
                                                  const std::vector<std::string>& members,
                                                  const TypeSchema& schema, Null null) {
  auto object = std::make_shared<ConfigStoreObject>(id);
  JsonMaker make;
  Json::Value data = make.Parse(object->GetData());  // its instance id
  Json::Value given = ReadMembers(members, schema, make, null);
  for (auto& [name, value] : given.GetObject()) {
    if (Json::Value* own = Json::FindMember(data, Json::Text(name))) {
      *own = value;
    } else {
      data.AddMember(name, value, make.GetAllocator());
    }
  }
  std::string text;
  Json::Serialize(data, text);
  object->SetData(text.c_str());
  return object;
}

// An update takes away what it gives as null or empty; an empty element says nothing.
bool TakesAway(const Json::Value& given) {
  if (given.IsArray()) {
    return std::any_of(given.Begin(), given.End(), TakesAway);
  }
  return given.IsObject() &&
         std::any_of(given.MemberBegin(), given.MemberEnd(), [](const auto& member) {
           return member.value.IsNull() || Json::IsEmptyContainer(member.value) ||
                  TakesAway(member.value);
         });
}

[[noreturn]] void RaiseNothingWritten(const Json::Value& given, const TypeSchema& schema) {
  const char* const why = given.ObjectEmpty() ? "the object holds no data"
                          : schema.HoldsNothingBesideId(given)
                              ? "the object holds nothing but its instance id"
                              : "without its empty members the object holds no data";
  throw ToolError(ExitCode::INVALID, std::string("nothing was written: ") + why);
}

void SayLeftOut(const Json::Value& given, const Json::Value& written) {
  for (const std::string& place : FindLeftOut(given, written)) {
    Say(place + " names nothing, and was left out");
  }
}

}  // namespace

Argument DataArgument() {
  return {.name = kData,
          .help =
              "A file of JSON, - for standard input, or MEMBER=VALUE ...: each value takes the "
              "type that the schema gives the member, arrays and objects are JSON text",
          .takes = Takes::TEXTS,
          .isRequired = true};
}

std::shared_ptr<ConfigStoreObject> ReadObject(const ConfigStoreObjectId& id,
                                              const std::string& path) {
  const std::string text = ReadData(path);
  auto object = std::make_shared<ConfigStoreObject>(id);
  object->SetData(text.c_str());
  return object;
}

std::shared_ptr<ConfigStoreObject> MakeObject(const ConfigStoreObjectId& id,
                                              const std::vector<std::string>& data,
                                              const TypeSchema& schema, Null null) {
  return IsFile(data) ? ReadObject(id, data.front()) : CollectMembers(id, data, schema, null);
}

void WriteObject(const ConfigStoreObjectId& id, const std::vector<std::string>& data,
                 const Write& write) {
  const TypeSchema schema(id);
  const auto object = MakeObject(id, data, schema);
  JsonMaker make;
  const Json::Value given = make.Parse(object->GetData());
  write(*OpenStore(), object);
  // The library writes nothing, and says nothing, when cleaning leaves nothing to write.
  if (object->IsEmpty()) {
    RaiseNothingWritten(given, schema);
  }
  SayLeftOut(given, make.Parse(object->GetData()));
}

void UpdateObject(const ConfigStoreObjectId& id, const std::vector<std::string>& data,
                  const Write& write) {
  const TypeSchema schema(id);
  const auto object = MakeObject(id, data, schema, Null::REMOVES);
  JsonMaker make;
  const Json::Value given = make.Parse(object->GetData());
  write(*OpenStore(), object);
  // What only takes away leaves no data to write either. The id of vital or cached data stays.
  if (object->IsEmpty() && (schema.HoldsNothingBesideId(given) || !TakesAway(given))) {
    RaiseNothingWritten(given, schema);
  }
  SayLeftOut(given, make.Parse(object->GetData()));
}

}  // namespace tarnctl
