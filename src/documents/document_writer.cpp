#include "documents/document_writer.h"

#include "json/indent.h"
#include "json/json.h"
#include "json/pointer.h"

namespace TarnConfigStore {
namespace {

constexpr std::size_t kPiece = std::size_t{64} * 1024;

}  // namespace

DocumentWriter::DocumentWriter(const std::function<void(std::string_view)>& write)
    : write_(write) {}

void DocumentWriter::FlushIfLong() {
  if (out_.size() >= kPiece) {
    write_(out_);
    out_.clear();
  }
}

void DocumentWriter::BeginMember(std::string_view name) {
  if (!isFirst_) {
    out_ += ',';
  }
  isFirst_ = false;
  Json::AppendLine(level_, out_);
  out_.append(Json::Quoted(name)).append(": ");
}

void DocumentWriter::Open(std::string_view name) {
  if (level_ > 0) {
    BeginMember(name);
    Json::AppendToken(pointer_, name);
  }
  out_ += '{';
  ++level_;
  isFirst_ = true;
}

void DocumentWriter::CloseLevel() {
  --level_;
  if (!isFirst_) {
    Json::AppendLine(level_, out_);
  }
  isFirst_ = false;
}

void DocumentWriter::Close() {
  CloseLevel();
  out_ += '}';
  pointer_.resize(level_ > 0 ? pointer_.rfind('/') : 0);
}

void DocumentWriter::Add(std::string_view name, std::string_view json) {
  BeginMember(name);
  Json::AppendIndented(json, level_, out_);
  FlushIfLong();
}

bool DocumentWriter::IsSameType(const ConfigStoreObjectId& id) const {
  return typeLevels_ == 3 && type_.key == id.key && type_.group == id.group &&
         type_.component == id.component;
}

void DocumentWriter::CloseType() {
  if (isList_) {
    CloseLevel();
    out_ += ']';
  }
  isList_ = false;
}

void DocumentWriter::OpenType(const ConfigStoreObjectId& id, bool isInstance) {
  if (typeLevels_ == 3) {
    CloseType();
    const unsigned kept = type_.component != id.component ? 0 : type_.group != id.group ? 1 : 2;
    for (; typeLevels_ > kept + 1; --typeLevels_) {
      Close();
    }
    typeLevels_ = kept;
  }
  if (typeLevels_ < 1) {
    Open(id.component);
  }
  if (typeLevels_ < 2) {
    Open(id.group);
  }
  BeginMember(id.key);
  typeLevels_ = 3;
  type_ = id;
  index_ = 0;
  isList_ = isInstance;
  if (isInstance) {
    out_ += '[';
    ++level_;
    isFirst_ = true;
  }
}

void DocumentWriter::BeginObject(const ConfigStoreObjectId& id, bool isInstance) {
  if (!isInstance || !IsSameType(id)) {
    OpenType(id, isInstance);
  }
  if (isInstance) {
    if (!isFirst_) {
      out_ += ',';
    }
    isFirst_ = false;
    Json::AppendLine(level_, out_);
    ++index_;
  }
}

void DocumentWriter::AddObject(const ConfigStoreObjectId& id, bool isInstance,
                               std::string_view json) {
  BeginObject(id, isInstance);
  Json::AppendIndented(json, level_, out_);
  FlushIfLong();
}

void DocumentWriter::AddIndented(const ConfigStoreObjectId& id, bool isInstance,
                                 std::string_view lines) {
  BeginObject(id, isInstance);
  out_ += lines;
  FlushIfLong();
}

unsigned DocumentWriter::LevelOfObject(bool isInstance) const {
  constexpr unsigned kAboveTypes = 2;  // component and group
  const unsigned ofTypes = typeLevels_ == 3 ? kAboveTypes + (isList_ ? 1 : 0) : 0;
  return level_ - ofTypes + kAboveTypes + (isInstance ? 1 : 0);
}

std::string DocumentWriter::PointerTo(const ConfigStoreObjectId& id, bool isInstance) const {
  // Of the sections, one name is open above the types.
  std::string pointer = pointer_.substr(0, pointer_.find('/', 1));
  for (const std::string* token : {&id.component, &id.group, &id.key}) {
    Json::AppendToken(pointer, *token);
  }
  if (isInstance) {
    Json::AppendToken(pointer, std::to_string(IsSameType(id) ? index_ : 0));
  }
  return pointer;
}

void DocumentWriter::EndObjects() {
  if (typeLevels_ == 3) {
    CloseType();
    Close();
    Close();
  }
  typeLevels_ = 0;
}

void DocumentWriter::Finish() {
  Close();
  out_ += '\n';
  write_(out_);
  out_.clear();
}

}  // namespace TarnConfigStore
