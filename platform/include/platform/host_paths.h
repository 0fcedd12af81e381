// The fixed paths of the host, and the root directory that they are resolved under. Messages and logs
// name the fixed paths. Everything here is thread-safe and callable while the process exits.
#pragma once

#include <string>

namespace HostPaths {

constexpr const char* kStore = "/etc/kestrel/configstore/current-store-1";
constexpr const char* kSchemaStore = "/etc/kestrel/configstore/schema-store-1";
/// There while both stores are about to become what this file holds.
constexpr const char* kPendingRestore = "/etc/kestrel/configstore/restore-1";
constexpr const char* kNotifyAllowlist =
    "/usr/lib/kestrel/configmanager/notify-list/allowlist.json";
constexpr const char* kUpgradeContext = "/run/kestrel/upgrade-context";

/// "" stands for "/"; slashes at the end are dropped. Without a call the root is the environment
/// variable TARN_HOST_ROOT, read once and never in a set-user-id program. What is open stays where it
/// is.
void SetRoot(const std::string& root);
std::string GetRoot();

/// Sets a root that has no slash at its end, and answers the one before. Once there is a root, it asks for
/// no memory.
std::string ExchangeRoot(std::string root) noexcept;

/// A fixed path under the root.
std::string Resolve(const char* fixedPath);

/// Grows at each SetRoot, so that a platform can keep resolved paths for as long as it stays the
/// same.
unsigned RootGeneration() noexcept;

}  // namespace HostPaths
