#include "tarnconfigstore/key_values.h"

#include "failure.h"
#include "json/json.h"
#include "json/utf8.h"
#include "table/columns.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"

#include <algorithm>
#include <string_view>

namespace tarnctl {
namespace {

constexpr const char* kValue = "VALUE";

bool IsFlag(const std::string& value) {
  return value.empty() || value == "true" || value == "false";
}

bool IsNumber(const std::string& value) {
  return std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// What whoever reads an entry makes something of, in words; nothing where the value is of that kind.
std::string Wanted(const std::string& key, const std::string& value) {
  if (key == "IS_BOOT" || key == "NOTIFY_KEELD") {
    return IsFlag(value) ? "" : "true or false";
  }
  if (key == "BOOT_MODE") {
    return IsNumber(value) ? "" : "a number";
  }
  if (key == "BOOT_INFO") {
    Json::Document info;
    if (value.empty()) {
      return {};
    }
    const bool isObject = Json::Parse(value, info) && info.IsObject();
    const auto type = isObject ? info.FindMember("type") : Json::Value::MemberIterator();
    return isObject && (type == info.MemberEnd() || type->value.IsInt())
               ? ""
               : "a JSON object, its \"type\" a number";
  }
  return {};  // another program's
}

// An entry that is absent reads as an empty text.
void GetEntry(const Given& given, const Output& output) {
  JsonMaker make;
  output.PrintMember(make.Of(TarnConfigStore::GetKeyValue(given.Text(kKey))));
}

void SetEntry(const Given& given, const Output& /*output*/) {
  const std::string& key = given.Text(kKey);
  const std::string wanted = Wanted(key, given.Text(kValue));
  if (!wanted.empty() && !given.Has(kForce)) {
    throw ToolError(ExitCode::INVALID, key + "=" + given.Text(kValue) +
                                           " means nothing: expected " + wanted +
                                           " (--force writes it all the same)");
  }
  TarnConfigStore::SetKeyValue(key, given.Text(kValue));
}

void DeleteEntry(const Given& given, const Output& /*output*/) {
  TarnConfigStore::SetKeyValue(given.Text(kKey), "");
}

const Columns kEntryColumns = {{"key"}, {"value"}};

void ListEntries(const Given& given, const Output& output) {
  if (auto table = ColumnTable::If(given, output, kEntryColumns)) {
    for (const char* const key : kKnownKeys) {
      table->Add({key, Json::Utf8::Escaped(TarnConfigStore::GetKeyValue(key))});
    }
    table->End();
    return;
  }
  JsonMaker make;
  Json::Value entries = make.Object();
  for (const char* const key : kKnownKeys) {
    make.Add(entries, key, TarnConfigStore::GetKeyValue(key));
  }
  output.PrintLenient(entries);
}

}  // namespace

Verb EntryVerbs() {
  const Argument key{.name = kKey, .isRequired = true};
  return {.name = "kv",
          .help = "Read and write the key/value entries",
          .verbs = {{.name = "list",
                     .help = "Print the entries that mean something to the library and to the boot",
                     .arguments = {ColumnsArgument(NamesOf(kEntryColumns))},
                     .run = ListEntries},
                    {.name = "get",
                     .help = "Print an entry; nothing when it is absent",
                     .arguments = {key},
                     .run = GetEntry},
                    {.name = "set",
                     .help = "Create or replace an entry",
                     .arguments = {key,
                                   {.name = kValue, .isRequired = true},
                                   Flag(kForce, "Also a value that means nothing")},
                     .run = SetEntry,
                     .writes = true},
                    {.name = "delete",
                     .help = "Empty an entry, which reads as one that is absent",
                     .arguments = {key},
                     .run = DeleteEntry,
                     .writes = true}}};
}

}  // namespace tarnctl
