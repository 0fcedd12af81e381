#include "doctor/put_aside.h"

#include "platform/base64.h"
#include "platform/file_descriptor.h"

#include "errors/raise.h"
#include "json/json.h"
#include "json/print.h"
#include "json/utf8.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr const char* kName = "/put-aside.json";

std::string Base64Of(const std::string& bytes) {
  std::string text(Base64_EncodedLength(bytes.size()), '\0');
  std::size_t written = 0;
  Base64_Encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), text.data(),
                text.size(), &written);
  text.resize(written);
  return text;
}

Json::Value TextOf(const std::optional<std::string>& text, Json::Allocator& pool) {
  if (!text) {
    return {};
  }
  if (Json::Utf8::IsValid(*text)) {
    return Json::Copy(*text, pool);
  }
  Json::Value bytes(rapidjson::kObjectType);
  bytes.AddMember("base64", Json::Copy(Base64Of(*text), pool), pool);
  return bytes;
}

void AddRows(const std::vector<HostRepair::LostRow>& rows, Json::Value& values,
             Json::Allocator& pool) {
  for (const HostRepair::LostRow& row : rows) {
    Json::Value columns(rapidjson::kObjectType);
    for (const HostRepair::Cell& cell : row.cells) {
      columns.AddMember(Json::Copy(cell.column, pool), TextOf(cell.text, pool), pool);
    }
    Json::Value value(rapidjson::kObjectType);
    value.AddMember("place", Json::Copy(row.place, pool), pool);
    value.AddMember("table", Json::Copy(row.table, pool), pool);
    value.AddMember("reason", Json::Copy(row.reason, pool), pool);
    value.AddMember("columns", columns, pool);
    values.PushBack(value, pool);
  }
}

// Answers with errno, or 0.
int WriteDurably(const std::string& path, const std::string& text) {
  FileDescriptor file(
      open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.IsOpen()) {
    return errno;
  }
  if (const int code = file.WriteAll(text)) {
    return code;
  }
  return fsync(file.Number()) == 0 && file.Close() ? 0 : errno;
}

int SyncDirectory(const std::string& path) {
  const FileDescriptor directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return directory.IsOpen() && fsync(directory.Number()) == 0 ? 0 : errno;
}

}  // namespace

PutAside::PutAside(std::string directory) : directory_(std::move(directory)) {}

void PutAside::SetRecovered(std::vector<HostRepair::LostRow> rows) {
  recovered_ = std::move(rows);
}

void PutAside::SetTaken(std::vector<HostRepair::LostRow> rows) {
  taken_ = std::move(rows);
}

void PutAside::Write() const {
  if (recovered_.empty() && taken_.empty()) {
    return;
  }
  Json::Document document(rapidjson::kObjectType);
  Json::Allocator& pool = document.GetAllocator();
  Json::Value values(rapidjson::kArrayType);
  AddRows(recovered_, values, pool);
  AddRows(taken_, values, pool);
  document.AddMember("format", 1, pool);
  document.AddMember("values", values, pool);
  std::string text;
  Json::Print(document, Json::Layout::INDENTED, Json::BadText::REPAIRED, text);
  text += "\n";
  const std::string path = directory_ + kName;
  const std::string draft = path + ".new";
  int error = WriteDurably(draft, text);
  if (error == 0 && std::rename(draft.c_str(), path.c_str()) != 0) {
    error = errno;
  }
  error = error == 0 ? SyncDirectory(directory_) : error;
  if (error != 0) {
    ThrowFailure(path + ": cannot be written: " + std::strerror(error));
  }
}

}  // namespace TarnConfigStore
