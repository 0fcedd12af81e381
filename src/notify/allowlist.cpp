#include "notify/allowlist.h"

#include "tarnconfigstore/file.h"

#include "platform/host_paths.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/document.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <pthread.h>

namespace TarnConfigStore {
namespace {

struct KeptAllowlist {
  std::mutex lock;  // held while the file is read
  std::atomic<const NotifyAllowlist*> allowlist{nullptr};
};

// Leaked, so that callers that run while the process exits still find it.
KeptAllowlist& TheAllowlist() {
  static KeptAllowlist& kept = *[] {
    auto* made = new KeptAllowlist;
    // The handlers that come last run first: whoever reads the file may be about to log, so a fork
    // has to wait for the reader before it closes the log.
    static_cast<void>(CSLogger::IsEnabled(0));
    pthread_atfork([] { TheAllowlist().lock.lock(); }, [] { TheAllowlist().lock.unlock(); },
                   [] { TheAllowlist().lock.unlock(); });
    return made;
  }();
  return kept;
}

}  // namespace

NotifyAllowlist ReadNotifyAllowlist() {
  const std::string path = HostPaths::Resolve(HostPaths::kNotifyAllowlist);
  if (!FileExists(path)) {
    ThrowFailure(std::string("Notification allowlist ") + HostPaths::kNotifyAllowlist +
                 " missing.");
  }
  const std::shared_ptr<JsonDoc> document = CreateDocumentFromFile(path);
  const auto entries = document->GetJsonValuePtr()->GetArray();
  NotifyAllowlist allowlist(entries.Size());
  for (const Json::Value& entry : entries) {
    allowlist.emplace(Json::Text(entry));
  }
  return allowlist;
}

const NotifyAllowlist& GetNotifyAllowlist() {
  KeptAllowlist& kept = TheAllowlist();
  if (const NotifyAllowlist* allowlist = kept.allowlist.load(std::memory_order_acquire)) {
    return *allowlist;
  }
  const std::lock_guard<std::mutex> guard(kept.lock);
  const NotifyAllowlist* allowlist = kept.allowlist.load(std::memory_order_relaxed);
  if (allowlist == nullptr) {
    allowlist = new NotifyAllowlist(ReadNotifyAllowlist());
    kept.allowlist.store(allowlist, std::memory_order_release);
  }
  return *allowlist;
}

}  // namespace TarnConfigStore
