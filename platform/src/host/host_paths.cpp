#include "platform/host_paths.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace HostPaths {
namespace {

std::string WithoutTrailingSlashes(std::string path) {
  while (!path.empty() && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

struct Root {
  Root() {
    const char* fromEnvironment = secure_getenv("TARN_HOST_ROOT");
    path = fromEnvironment == nullptr ? std::string() : WithoutTrailingSlashes(fromEnvironment);
  }
  std::mutex lock;
  std::string path;
  std::atomic<unsigned> generation{1};
};

// Leaked, so that callers that run while the process exits still find it.
Root& TheRoot() {
  static Root& root = *new Root;
  return root;
}

}  // namespace

void SetRoot(const std::string& root) {
  Root& theRoot = TheRoot();
  const std::lock_guard<std::mutex> guard(theRoot.lock);
  theRoot.path = WithoutTrailingSlashes(root);
  theRoot.generation.fetch_add(1, std::memory_order_release);
}

std::string GetRoot() {
  Root& theRoot = TheRoot();
  const std::lock_guard<std::mutex> guard(theRoot.lock);
  return theRoot.path;
}

std::string Resolve(const char* fixedPath) {
  return GetRoot() + fixedPath;
}

unsigned RootGeneration() noexcept {
  return TheRoot().generation.load(std::memory_order_acquire);
}

}  // namespace HostPaths
