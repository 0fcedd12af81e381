#include "tarnconfigstore/rehearsal.h"

#include "platform/host_copy.h"
#include "platform/host_paths.h"
#include "platform/logger.h"

#include "errors/platform_failures.h"
#include "notify/notification.h"
#include "objects/schema_lookup.h"
#include "rehearsal/host_changes.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

namespace TarnConfigStore {

// Another root for as long as it lives.
class UnderRoot {
 public:
  explicit UnderRoot(std::string root) : own_(HostPaths::ExchangeRoot(std::move(root))) {}
  ~UnderRoot() { HostPaths::ExchangeRoot(std::move(own_)); }
  UnderRoot(const UnderRoot&) = delete;
  UnderRoot& operator=(const UnderRoot&) = delete;

 private:
  std::string own_;
};

namespace {

namespace fs = std::filesystem;

// What is read there and never written: whether the host is being upgraded.
void LinkWhatIsRead(const std::string& hostRoot, const std::string& root) {
  std::error_code failure;
  if (!fs::exists(root, failure)) {
    return;  // nor has the host a root
  }
  fs::create_directory_symlink(fs::absolute(hostRoot + "/run"), root + "/run", failure);
  if (failure) {
    ThrowFailure(root + "/run: cannot make the link: " + failure.message());
  }
}

bool AreEqual(const std::string& path, const std::string& other) {
  using Bytes = std::istreambuf_iterator<char>;
  std::ifstream one(path, std::ios::binary);
  std::ifstream two(other, std::ios::binary);
  return std::equal(Bytes(one), Bytes(), Bytes(two), Bytes());
}

// Whether a database is not as it was copied. What was committed last may be in its log alone.
bool IsWritten(const char* fixedPath, const std::string& before, const std::string& after) {
  std::error_code ignored;
  const std::string log = after + fixedPath + "-wal";
  return (fs::exists(log, ignored) && fs::file_size(log, ignored) != 0) ||
         !AreEqual(before + fixedPath, after + fixedPath);
}

HostState StateUnder(const std::string& root) {
  const UnderRoot there(root);
  return ReadHostState();
}

// The type of each row that was changed; empty where it is not installed.
std::vector<SchemaHandle> TypesUnder(const std::string& root, const HostState& state,
                                     const std::vector<RowChange>& changes) {
  const UnderRoot there(root);
  std::vector<SchemaHandle> types(changes.size());
  if (!state.types.empty()) {
    std::transform(changes.begin(), changes.end(), types.begin(),
                   [](const RowChange& change) { return FindSchema(change.id); });
  }
  return types;
}

}  // namespace

struct Rehearsal::Copies {
  explicit Copies(const std::string& directory)
      : before(fs::canonical(directory).string() + "/before"),
        after(fs::canonical(directory).string() + "/after") {
    WithStoreFailures([this] { HostCopy::Copy(before, after); });
    LinkWhatIsRead(hostRoot, before);
    LinkWhatIsRead(hostRoot, after);
    root.emplace(after);
  }

  const std::string hostRoot = HostPaths::GetRoot();
  const std::string before;
  const std::string after;
  const NotificationSilence silence;
  std::optional<UnderRoot> root;
};

Rehearsal::Rehearsal(const std::string& directory) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "Rehearsal");
  copies_ = WithStoreFailures([&] { return std::make_unique<const Copies>(directory); });
}

Rehearsal::~Rehearsal() = default;

HostDifference Rehearsal::Difference() const {
  const HostState before = StateUnder(copies_->before);
  const HostState after = StateUnder(copies_->after);
  const std::vector<RowChange> changes = FindChangedRows(before, after);
  const std::vector<SchemaHandle> typesBefore = TypesUnder(copies_->before, before, changes);
  const std::vector<SchemaHandle> typesAfter = TypesUnder(copies_->after, after, changes);
  HostDifference difference;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (auto told = TellOf(changes[i], typesBefore[i], typesAfter[i])) {
      difference.objects.push_back(std::move(*told));
    }
  }
  FindOtherChanges(before, after, difference);
  return difference;
}

std::string Rehearsal::WhyNotWritable() const {
  const UnderRoot there(copies_->hostRoot);
  for (const char* database : {HostPaths::kStore, HostPaths::kSchemaStore}) {
    if (IsWritten(database, copies_->before, copies_->after)) {
      if (const std::string why = HostCopy::WhyNotWritable(database); !why.empty()) {
        return std::string(database) + ": " + why;
      }
    }
  }
  return {};
}

std::string Rehearsal::InWordsOfHost(std::string text) const {
  for (const std::string& root : {copies_->after, copies_->before}) {
    for (std::size_t at = text.find(root); at != std::string::npos;
         at = text.find(root, at + copies_->hostRoot.size())) {
      text.replace(at, root.size(), copies_->hostRoot);
    }
  }
  return text;
}

bool HostDifference::IsEmpty() const {
  return objects.empty() && waiting.empty() && settled.empty() && types.empty() && entries.empty();
}

}  // namespace TarnConfigStore
