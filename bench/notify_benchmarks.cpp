#include "tarnconfigstore/key_values.h"

#include "benchmarks.h"
#include "comparison.h"
#include "daemon.h"
#include "measured_host.h"
#include "notify/notification.h"
#include "notify/notification_message.h"
#include "persistence/connection.h"
#include "samples.h"

#include <unistd.h>

namespace Benchmarks {
namespace {

using TarnConfigStore::NotifyIfAllowlisted;

// Switches notification for as long as one side is measured.
class Switch {
 public:
  explicit Switch(const char* value) { TarnConfigStore::SetKeyValue("NOTIFY_KEELD", value); }
  ~Switch() { TarnConfigStore::SetKeyValue("NOTIFY_KEELD", "false"); }
  Switch(const Switch&) = delete;
  Switch& operator=(const Switch&) = delete;
};

// The call as operations make it, on a connection that they hold.
void Notify(benchmark::State& state, const char* key, const char* switchValue) {
  const Switch notification(switchValue);
  const auto connection = TarnConfigStore::GetDBStore(DBStore::Type::CURRENT_STORE, true);
  const TarnConfigStore::ConfigStoreObjectId id = IdOf(key);
  Measure(state, [&] {
    NotifyIfAllowlisted(id, connection);
    return &connection;
  });
}

void RegisterUnheard(Roads& roads, const char* name, const char* does, const char* switchValue) {
  constexpr double kTarget = 1.5;
  Compare(
      {.name = name, .does = does, .targetRatio = kTarget},
      [switchValue](benchmark::State& state) { Notify(state, Host::kPlain, switchValue); },
      [&roads](benchmark::State& state) {
        Measure(state, [&] { return roads.floor.Holds("NOTIFY_KEELD", "true"); });
      });
}

}  // namespace

void RegisterNotifications(Roads& roads) {
  RegisterUnheard(roads, "notify/off",
                  "what a write pays for notification that is switched off, against one key/value "
                  "read",
                  "false");
  RegisterUnheard(roads, "notify/not-listed", "the same switched on, the type not on the list",
                  "true");
  constexpr double kTarget = 1.5;
  constexpr int kRepetitions = 101;  // each starts a daemon
  const Sides sides = Compare(
      {.name = "notify/listening",
       .does = "the same with the type on the list and a daemon that reads, against one "
               "key/value read, socket, connect, send and close",
       .targetRatio = kTarget},
      [](benchmark::State& state) {
        const Daemon daemon(Daemon::Manner::READS);
        Notify(state, Host::kWritten, "true");
      },
      // At the same pace: a daemon that is sent to without a pause never sleeps, and one that has to
      // be woken makes its sender pay for that.
      [&roads](benchmark::State& state) {
        const Daemon daemon(Daemon::Manner::READS);
        const std::string message = TarnConfigStore::MakeNotificationMessage(
            std::string("tarn.bench.") + Host::kWritten, getpid());
        Measure(state, [&] {
          roads.floor.Holds("NOTIFY_KEELD", "true");
          SendBare(message);
          return &message;
        });
      });
  sides.library->Repetitions(kRepetitions);
  sides.floor->Repetitions(kRepetitions);
}

}  // namespace Benchmarks
