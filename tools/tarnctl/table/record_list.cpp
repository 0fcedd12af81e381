#include "table/record_list.h"

#include <string>
#include <utility>
#include <vector>

namespace tarnctl {
namespace {

// Lists in records are of words: names of parts, flags.
std::string WordsOf(const Json::Value& value) {
  if (!value.IsArray()) {
    return CellOf(value);
  }
  std::string words;
  for (const Json::Value& word : value.GetArray()) {
    words += (words.empty() ? "" : ",") + CellOf(word);
  }
  return words;
}

}  // namespace

RecordList::RecordList(const Given& given, const Output& output, Columns columns)
    : columns_(std::move(columns)),
      table_(ColumnTable::If(given, output, columns_)),
      list_(output) {}

void RecordList::Add(const Json::Value& record) {
  if (!table_) {
    list_.Add(record);
    return;
  }
  std::vector<std::string> cells;
  for (const Column& column : columns_) {
    const Json::Value* value = Json::FindMember(record, column.name);
    cells.push_back(value != nullptr ? WordsOf(*value) : "");
  }
  table_->Add(cells);
}

void RecordList::End() {
  if (table_) {
    table_->End();
  } else {
    list_.End();
  }
}

}  // namespace tarnctl
