#include "platform/host_paths.h"

#include "platform/made_once.h"
#include "platform/process_locks.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace HostPaths {
namespace {

std::string WithoutTrailingSlashes(std::string path) {
  while (!path.empty() && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

constinit MadeOnce<std::string> root;
constinit std::atomic<unsigned> generation{1};

// With the lock held.
std::string& TheRoot() {
  return root.Get([] {
    const char* fromEnvironment = secure_getenv("TARN_HOST_ROOT");
    return fromEnvironment == nullptr ? std::string() : WithoutTrailingSlashes(fromEnvironment);
  });
}

}  // namespace

void SetRoot(const std::string& path) {
  const ProcessLocks::Guard guard(ProcessLocks::Rank::HOST_ROOT);
  TheRoot() = WithoutTrailingSlashes(path);
  generation.fetch_add(1, std::memory_order_release);
}

std::string GetRoot() {
  const ProcessLocks::Guard guard(ProcessLocks::Rank::HOST_ROOT);
  return TheRoot();
}

std::string ExchangeRoot(std::string root) noexcept {
  const ProcessLocks::Guard guard(ProcessLocks::Rank::HOST_ROOT);
  TheRoot().swap(root);
  generation.fetch_add(1, std::memory_order_release);
  return root;
}

std::string Resolve(const char* fixedPath) {
  const std::string_view fixed = fixedPath;
  std::string path;
  const ProcessLocks::Guard guard(ProcessLocks::Rank::HOST_ROOT);
  const std::string& under = TheRoot();
  path.reserve(under.size() + fixed.size());
  return path.append(under).append(fixed);
}

unsigned RootGeneration() noexcept {
  return generation.load(std::memory_order_acquire);
}

}  // namespace HostPaths
