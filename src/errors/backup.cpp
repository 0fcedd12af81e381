#include "tarnconfigstore/backup.h"

#include "platform/host_backup.h"
#include "platform/host_paths.h"

#include "errors/platform_failures.h"

#include <ctime>

namespace TarnConfigStore {
namespace {

std::string TimeText(std::int64_t seconds) {
  const std::time_t time = seconds;
  std::tm parts = {};
  char text[32] = "";
  if (gmtime_r(&time, &parts) != nullptr) {
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  }
  return text;
}

BackupContent Describe(const ::HostBackup::Content& content) {
  return {TimeText(content.created), content.storeLayout, content.schemaStoreLayout,
          content.objects, content.types};
}

}  // namespace

BackupReport BackupHost(const std::string& path, const BackupOptions& options) {
  const auto written =
      WithStoreFailures([&] { return ::HostBackup::Backup(path, options.replace); });
  return {path, written.bytes, Describe(written.content)};
}

RestoreReport RestoreHost(const std::string& path, const RestoreOptions& options) {
  auto restored = WithStoreFailures([&] { return ::HostBackup::Restore(path, options.force); });
  return {HostPaths::Resolve(HostPaths::kStore), HostPaths::Resolve(HostPaths::kSchemaStore),
          std::move(restored.created),           std::move(restored.replaced),
          std::move(restored.outdated),          Describe(restored.content)};
}

}  // namespace TarnConfigStore
