// The fixed paths of the host, and the root directory that they are resolved under.
#pragma once

#include <string>

namespace HostPaths {

constexpr const char* kStore = "/etc/kestrel/configstore/current-store-1";
constexpr const char* kSchemaStore = "/etc/kestrel/configstore/schema-store-1";
constexpr const char* kNotifyAllowlist =
    "/usr/lib/kestrel/configmanager/notify-list/allowlist.json";
constexpr const char* kUpgradeContext = "/run/kestrel/upgrade-context";

/// "" stands for "/". Without a call the root is TARN_HOST_ROOT, read once with secure_getenv.
void SetRoot(const std::string& root);
std::string GetRoot();

/// A fixed path under the root. Thread-safe.
std::string Resolve(const char* fixedPath);

/// Grows at each SetRoot, so that resolved paths can be kept for as long as it stays the same.
unsigned RootGeneration() noexcept;

}  // namespace HostPaths
