#include "notify/notification.h"

#include "tarnconfigstore/exceptions.h"

#include "platform/logger.h"
#include "platform/no_cancellation.h"

#include "notify/allowlist.h"
#include "notify/notification_message.h"
#include "notify/uds_client.h"
#include "persistence/connection.h"

#include <atomic>
#include <exception>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace TarnConfigStore {
namespace {

constexpr const char* kSwitch = "NOTIFY_KEELD";
constexpr const char* kEndpoint = "kslLocalSocketKeeldNotifyWisp";

constinit std::atomic<int> silences{0};

// "COMPONENT.GROUP.LAST", in one piece of memory.
std::string DottedName(const ConfigStoreObjectId& id, const std::string& last) {
  std::string name;
  name.reserve(id.component.size() + id.group.size() + last.size() + 2);
  name.append(id.component).append(1, '.').append(id.group).append(1, '.').append(last);
  return name;
}

bool IsAllowlisted(const ConfigStoreObjectId& id, const std::string& typeName) {
  try {
    const NotifyAllowlist& allowlist = GetNotifyAllowlist();
    return allowlist.contains(typeName) || allowlist.contains(DottedName(id, "*"));
  } catch (const ConfigStoreException& error) {
    CSLogger::Log(CSLogger::kProblem, "Failed to read notify list: %s. Defaulting to empty list.",
                  error.what());
    return false;
  }
}

void Announce(const ConfigStoreObjectId& id, const std::string& typeName) {
  try {
    const std::string message = MakeNotificationMessage(typeName, getpid());
    UdsClient client(kEndpoint);
    client.Connect();
    client.Send(message);
  } catch (const std::exception& error) {
    CSLogger::Log(CSLogger::kOutcome,
                  "Error while sending notification for config object '%s' to KeelD: %s",
                  id.toString().c_str(), error.what());
  }
}

void AnnounceIfAllowlisted(const ConfigStoreObjectId& id) {
  if (silences.load(std::memory_order_acquire) != 0) {
    return;
  }
  const std::string typeName = DottedName(id, id.key);
  if (IsAllowlisted(id, typeName)) {
    Announce(id, typeName);
  }
}

}  // namespace

NotificationSilence::NotificationSilence() noexcept {
  silences.fetch_add(1, std::memory_order_acq_rel);
}

NotificationSilence::~NotificationSilence() {
  silences.fetch_sub(1, std::memory_order_acq_rel);
}

std::string WhyNobodyListens() {
  try {
    UdsClient(kEndpoint).Connect();
    return {};
  } catch (const std::runtime_error& error) {
    return std::string(kEndpoint) + ": " + error.what();
  }
}

bool IsKeeldNotificationEnabled(const DBStore::ConnectionHandle& connection) {
  std::string value;
  return DBStore::ReadKeyValue(kSwitch, &value, connection) == 0 && value == "true";
}

bool IsKeeldNotificationEnabled() {
  return IsKeeldNotificationEnabled(GetDBStore(DBStore::Type::CURRENT_STORE, false));
}

void NotifyIfAllowlisted(const ConfigStoreObjectId& id,
                         const DBStore::ConnectionHandle& connection) noexcept {
  const NoCancellation uncancelled;
  try {
    if (IsKeeldNotificationEnabled(connection)) {
      AnnounceIfAllowlisted(id);
    }
  } catch (...) {
    // The change is made: not even running out of memory over the telling may look like a failure.
  }
}

void NotifyIfAllowlisted(const std::vector<ConfigStoreObjectId>& ids,
                         const DBStore::ConnectionHandle& connection) noexcept {
  const NoCancellation uncancelled;
  try {
    if (!ids.empty() && IsKeeldNotificationEnabled(connection)) {
      for (const ConfigStoreObjectId& id : ids) {
        AnnounceIfAllowlisted(id);
      }
    }
  } catch (...) {
    // As above.
  }
}

void NotifyIfAllowlisted(const ConfigStoreObjectId& id) noexcept {
  const NoCancellation uncancelled;
  try {
    NotifyIfAllowlisted(id, GetDBStore(DBStore::Type::CURRENT_STORE, false));
  } catch (...) {
    // As above.
  }
}

}  // namespace TarnConfigStore
