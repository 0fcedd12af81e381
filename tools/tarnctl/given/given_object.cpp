#include "given/given_object.h"

#include "given/given_masks.h"
#include "given/left_out.h"
#include "given/member_values.h"
#include "given/secret_input.h"
#include "json/secrets.h"
#include "store/stored_objects.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

// Refusing it would break whoever has done so until now.
void WarnOfSecrets(const std::vector<std::string>& arguments, const TypeSchema& schema) {
  for (const std::string& member : FindSecretsGiven(arguments, schema)) {
    std::string warning = "the secret \"" + member + "\" ";
    warning.append("stood among the arguments, which every user may see; ").append(kSecret);
    warning.append(" ").append(member).append(" reads it from standard input");
    Say(warning);
  }
}

std::vector<HiddenValue> AskFor(const std::vector<std::string>& members) {
  std::vector<std::string> values = ReadSecrets(members);
  std::vector<HiddenValue> hidden;
  for (std::size_t i = 0; i < members.size(); ++i) {
    hidden.push_back({members[i], std::move(values[i])});
  }
  return hidden;
}

std::shared_ptr<ConfigStoreObject> CollectMembers(const ConfigStoreObjectId& id,
                                                  const ObjectData& members,
                                                  const TypeSchema& schema, Null null) {
  if (members.areSeen) {
    WarnOfSecrets(members.data, schema);
  }
  auto object = std::make_shared<ConfigStoreObject>(id);
  JsonMaker make;
  Json::Value data = make.Parse(object->GetData());  // its instance id
  Json::Value given = ReadMembers(members.data, schema, make, null, AskFor(members.secrets));
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

Notes NotesOfLeftOut(const GivenObject& given, const Json::Value& data, const TypeSchema& schema) {
  JsonMaker make;
  Notes notes;
  for (const std::string& place : FindLeftOut(data, make.Parse(given.object->GetData()))) {
    notes.push_back(given.source.WithLine(
        place, Json::ShownPointer(place, schema.Place()) + " names nothing, and was left out"));
  }
  return notes;
}

void RefuseMasks(const GivenObject& given, const TypeSchema& schema) {
  if (!schema.Place().HoldsSecrets()) {
    return;
  }
  JsonMaker make;
  if (Findings masks = FindMasks(make.Parse(given.object->GetData()), schema); !masks.empty()) {
    throw ToolError(ExitCode::INVALID,
                    "nothing was written: the data hold a secret as it is shown, not as it is",
                    TarnConfigStore::CS_GENERIC, given.source.WithLines(std::move(masks)));
  }
}

PreparedWrite Prepare(const ConfigStoreObjectId& id, const ObjectData& data, Null null,
                      const Write& write) {
  const auto schema = std::make_shared<const TypeSchema>(id);
  const auto given = std::make_shared<const GivenObject>(MakeObject(id, data, *schema, null));
  return [schema, given, null, write](TarnConfigStore::ConfigStore& store) {
    JsonMaker make;
    const Json::Value before = make.Parse(given->object->GetData());
    given->source.Locate([&] { write(store, given->object); });
    // The library writes nothing, and says nothing, when cleaning leaves nothing to write. What only
    // takes away leaves no data to write either; the id of vital or cached data stays.
    if (given->object->IsEmpty() &&
        (null == Null::OF_TYPE || schema->HoldsNothingBesideId(before) || !TakesAway(before))) {
      RaiseNothingWritten(before, *schema);
    }
    return NotesOfLeftOut(*given, before, *schema);
  };
}

}  // namespace

Argument DataArgument() {
  return {
      .name = kData,
      .help =
          "A file of JSON, of YAML where it ends in .yaml or .yml, - for JSON on standard input, "
          "or MEMBER=VALUE ...: each value takes the "
          "type that the schema gives the member, arrays and objects are JSON text",
      .takes = Takes::TEXTS,
      .isRequired = true};
}

std::vector<Argument> DataOrSecretArguments() {
  Argument data = DataArgument();
  data.isRequired = false;
  data.help += "; a secret given so can be seen by every user of the host, and gets a warning";
  return {
      std::move(data),
      {.name = kSecret,
       .help = "Read the value of MEMBER from standard input, all of it but the last line end, or "
               "from the terminal without showing it, so that nobody sees it among the "
               "arguments; can be repeated, for a line each",
       .takes = Takes::TEXTS,
       .valueName = "MEMBER"}};
}

bool IsFile(const std::vector<std::string>& data) {
  return data.size() == 1 && data.front().find('=') == std::string::npos;
}

ObjectData DataOf(const Given& given) {
  ObjectData data{given.Texts(kData), {}};
  if (given.Takes(kSecret)) {
    data.secrets = given.Texts(kSecret);
  }
  if (data.data.empty() && data.secrets.empty()) {
    throw ToolError(ExitCode::USAGE, std::string(kData) + " or " + kSecret + " is required");
  }
  if (IsFile(data.data) && !data.secrets.empty()) {
    throw ToolError(ExitCode::USAGE, std::string(kSecret) +
                                         " goes with MEMBER=VALUE, not with a file, which may hold "
                                         "the secret itself");
  }
  return data;
}

GivenObject MakeObject(const ConfigStoreObjectId& id, const ObjectData& data,
                       const TypeSchema& schema, Null null) {
  GivenObject given;
  if (IsFile(data.data)) {
    given.source = GivenData::Read(data.data.front(), PlaceOfData(schema.Root()),
                                   null == Null::REMOVES ? YamlNull::ALWAYS : YamlNull::OF_TYPE,
                                   Wanted::OBJECT);
    given.object = std::make_shared<ConfigStoreObject>(id);
    given.object->SetData(given.source.Text().c_str());
  } else {
    given.object = CollectMembers(id, data, schema, null);
  }
  RefuseMasks(given, schema);
  return given;
}

PreparedWrite PrepareObject(const ConfigStoreObjectId& id, const ObjectData& data,
                            const Write& write) {
  return Prepare(id, data, Null::OF_TYPE, write);
}

PreparedWrite PrepareUpdate(const ConfigStoreObjectId& id, const ObjectData& data,
                            const Write& write) {
  return Prepare(id, data, Null::REMOVES, write);
}

void Run(const PreparedWrite& write) {
  for (const std::string& note : write(*OpenStore())) {
    Say(note);
  }
}

void WriteObject(const ConfigStoreObjectId& id, const ObjectData& data, const Write& write) {
  Run(PrepareObject(id, data, write));
}

void UpdateObject(const ConfigStoreObjectId& id, const ObjectData& data, const Write& write) {
  Run(PrepareUpdate(id, data, write));
}

}  // namespace tarnctl
