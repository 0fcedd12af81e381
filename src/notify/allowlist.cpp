#include "notify/allowlist.h"

#include "tarnconfigstore/file.h"

#include "platform/host_paths.h"
#include "platform/made_once.h"
#include "platform/process_locks.h"

#include "errors/raise.h"
#include "objects/document.h"

#include <memory>

namespace TarnConfigStore {
namespace {

constinit MadeOnce<const NotifyAllowlist> theAllowlist;

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
  if (const NotifyAllowlist* const allowlist = theAllowlist.Find()) {
    return *allowlist;
  }
  // The others wait for the one who reads the file.
  const ProcessLocks::Guard guard(ProcessLocks::Rank::NOTIFY_ALLOWLIST);
  return theAllowlist.Get(ReadNotifyAllowlist);
}

}  // namespace TarnConfigStore
