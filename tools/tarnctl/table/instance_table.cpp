#include "table/instance_table.h"

#include "json/utf8.h"

#include <algorithm>

namespace tarnctl {
namespace {

std::vector<std::string> MembersAtTop(const TypeSchema& type) {
  std::vector<std::string> names;
  type.Root().ForEachMember([&names](std::string_view name, const Json::ValuePlace& /*place*/) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      names.emplace_back(name);
    }
  });
  return names;
}

// What a type has no place for, in words; empty where it has one.
std::string WhyNoMember(const MemberPath& path, const TypeSchema& type) {
  try {
    type.KindsOf(path);
  } catch (const ToolError& error) {
    return error.what();
  }
  JsonMaker make;
  Json::Value data;
  for (auto name = path.rbegin(); name != path.rend(); ++name) {
    Json::Value around(rapidjson::kObjectType);
    around.AddMember(make.Of(*name), data, make.GetAllocator());
    data = around;
  }
  const Findings unknown = type.FindUndeclared(data);
  return unknown.empty() ? "" : unknown.front().error;
}

// The id first: it says what the row is about.
std::vector<std::string> MembersThatSomeHave(const Objects& objects, const TypeSchema& type) {
  std::vector<std::string> names;
  if (const std::string_view id = type.InstanceIdMember(); !id.empty()) {
    names.emplace_back(id);
  }
  for (const auto& object : objects) {
    JsonMaker make;
    const Json::Value data = make.Parse(object->GetData());
    for (const auto& member : data.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (std::find(names.begin(), names.end(), name) == names.end()) {
        names.emplace_back(name);
      }
    }
  }
  return names;
}

// Names of members may be texts of any kind.
std::vector<std::string> Escaped(const std::vector<std::string>& names) {
  std::vector<std::string> headings;
  std::transform(names.begin(), names.end(), std::back_inserter(headings),
                 [](const std::string& name) { return Json::Utf8::Escaped(name); });
  return headings;
}

void AddMembersOf(const Json::Value& data, const std::string& object, const std::string& path,
                  ColumnTable& table) {
  for (const auto& [name, value] : data.GetObject()) {
    const std::string place = path + CellOf(name);
    if (value.IsObject() && !value.ObjectEmpty()) {
      AddMembersOf(value, object, place + ".", table);
    } else {
      table.Add({object, place, CellOf(value)});
    }
  }
}

}  // namespace

InstancePrinter::InstancePrinter(const Given& given, const Output& output,
                                 const TarnConfigStore::ConfigStoreObjectId& type)
    : output_(output), type_(type), shown_(given), columns_(ChosenColumns(given, output)) {
  for (const std::string& column : columns_) {
    if (const std::string why = WhyNoMember(ParseMember(column), type_); !why.empty()) {
      RaiseNoColumn(column, MembersAtTop(type_), why);
    }
  }
}

void InstancePrinter::Print(const Objects& objects) {
  if (PrintsTable(columns_, output_)) {
    PrintTable(objects);
    return;
  }
  JsonMaker make;
  output_.Print(make.List(objects, [&](const auto& object) { return shown_.Of(*object, make); }));
}

void InstancePrinter::PrintTable(const Objects& objects) const {
  const std::vector<std::string> names =
      columns_.empty() ? MembersThatSomeHave(objects, type_) : columns_;
  std::vector<MemberPath> paths;
  paths.reserve(names.size());
  for (const std::string& name : names) {
    paths.push_back(columns_.empty() ? MemberPath{name} : ParseMember(name));
  }
  Table table(output_, Escaped(names));
  for (const auto& object : objects) {
    JsonMaker make;
    const Json::Value data = make.Parse(object->GetData());
    std::vector<std::string> cells;
    for (const MemberPath& path : paths) {
      Json::Value value;
      const bool isThere = shown_.Read(data, path, type_, make, value);
      cells.push_back(isThere ? CellOf(value) : "");
    }
    table.Add(std::move(cells));
  }
  table.End();
}

void RequireNoColumns(const Given& given) {
  if (given.Has(kColumns)) {
    throw ToolError(ExitCode::USAGE, "--columns is of lists (see --help)");
  }
}

void AddMembers(const Objects& objects, ShownData shown, ColumnTable& table) {
  for (const auto& object : objects) {
    JsonMaker make;
    const std::string name = Json::Utf8::Escaped(FormatObject(object->GetConfigStoreObjectId()));
    const Json::Value data = shown.Of(*object, make);
    if (!data.IsObject() || data.ObjectEmpty()) {  // a secret as a whole, or nothing
      table.Add({name, "", CellOf(data)});
    } else {
      AddMembersOf(data, name, "", table);
    }
  }
}

}  // namespace tarnctl
