#include "floor_export.h"

#include "platform/host_paths.h"

#include "json/utf8.h"

#include <rapidjson/prettywriter.h>

#include <stdexcept>
#include <string_view>

namespace Benchmarks {
namespace {

constexpr const char* kReadTexts =
    "SELECT UserValue FROM Config WHERE Component = ? AND ConfigGroup = ? AND Name = ? AND Success "
    "= 1 AND UserValue NOT NULL ORDER BY Identifier";

// Writes what is read, each member and element on a line of its own.
class Indenter {
 public:
  explicit Indenter(TextMaker& text) : text_(text) {}

  bool Null() { return Word("null"); }
  bool Bool(bool value) { return Word(value ? "true" : "false"); }
  bool Integer(std::string_view text) { return Word(text); }
  bool Real(std::string_view text) { return Word(text); }
  bool String(std::string_view text) {
    Next();
    text_.PutQuoted(text);
    return true;
  }
  bool Key(std::string_view name) {
    Next();
    text_.PutQuoted(name);
    text_.Put(": ");
    isNamed_ = true;
    return true;
  }
  bool Open(bool isObject) {
    Next();
    text_.Put(isObject ? '{' : '[');
    isFirst_ = true;
    return ++depth_ <= Json::kMaxDepth;
  }
  bool Close(bool isObject, std::size_t count) {
    --depth_;
    isFirst_ = false;
    if (count > 0) {
      text_.PutLine(kIndent * depth_);
    }
    text_.Put(isObject ? '}' : ']');
    return true;
  }

 private:
  static constexpr std::size_t kIndent = 2;

  void Next() {
    if (isNamed_ || depth_ == 0) {
      isNamed_ = false;
      return;
    }
    if (!isFirst_) {
      text_.Put(',');
    }
    isFirst_ = false;
    text_.PutLine(kIndent * depth_);
  }
  bool Word(std::string_view text) {
    Next();
    text_.Put(text);
    return true;
  }

  TextMaker& text_;
  std::size_t depth_ = 0;
  bool isFirst_ = false;
  bool isNamed_ = false;
};

}  // namespace

void PutIndented(TextMaker& text, std::string_view json) {
  const std::size_t before = text.Size();
  Indenter indenter(text);
  if (Json::Utf8::IsValid(json) && PlainReader<Indenter>(json, indenter).Read()) {
    return;
  }
  text.Cut(before);
  Json::Document careful;
  if (!Json::Parse(json, careful)) {
    throw std::runtime_error("floor: a text that is not JSON");
  }
  rapidjson::StringBuffer buffer;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
  writer.SetIndent(' ', 2);
  careful.Accept(writer);
  text.Put({buffer.GetString(), buffer.GetSize()});
}

FloorExport::FloorExport(const std::string& root)
    : database_(root + HostPaths::kStore, FloorDatabase::Access::READ, kStoreMark, kStoreLayout),
      texts_(database_, kReadTexts) {}

std::size_t FloorExport::Run(const TarnConfigStore::ConfigStoreObjectId& type) {
  constexpr std::size_t kPiece = std::size_t{64} * 1024;
  texts_.Bind(1, type.component);
  texts_.Bind(2, type.group);
  texts_.Bind(3, type.key);
  std::size_t written = 0;
  text_.Cut(0);
  while (texts_.Step()) {
    PutIndented(text_, texts_.Text(0));
    text_.Put(',');
    if (text_.Size() > kPiece) {
      written += text_.Size();
      text_.Cut(0);
    }
  }
  texts_.Reset();
  return written + text_.Size();
}

}  // namespace Benchmarks
