// What somebody sends to `tarnctl watch`, in pieces of any size.
// An input is a byte for the size of the pieces, and what is sent.
#include "fuzz_target.h"
#include "json/json.h"
#include "notify/notification_message.h"
#include "watch/watch_message.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Fuzz {
namespace {

using tarnctl::Notification;
using tarnctl::WatchMessageReader;

// All that a sender says, until it is left: a line for each notification, and the reason.
std::string Received(std::string_view sent, std::size_t piece) {
  WatchMessageReader reader;
  std::string told;
  try {
    while (!sent.empty()) {
      reader.Append(sent.substr(0, piece));
      sent.remove_prefix(std::min(piece, sent.size()));
      while (reader.IsInsideMessage()) {
        const auto notification = reader.Next();
        if (!notification) {
          break;
        }
        Require(!notification->objects.empty() && notification->process >= 0,
                "a notification names objects and a process");
        for (const std::string& object : notification->objects) {
          told += object + " ";
        }
        told += std::to_string(notification->process) + "\n";
      }
    }
    return told + (reader.IsInsideMessage() ? "..." : "");
  } catch (const std::invalid_argument& error) {
    return told + error.what();
  }
}

void Run(std::string_view input) {
  const std::size_t piece = TakeByte(input) + std::size_t{1};
  Require(Received(input, piece) == Received(input, input.size()),
          "a message is the same in pieces", Received(input, piece));
  // What the library sends is understood, as long as the name is one that it sends.
  const std::string name(input.substr(0, 100));
  if (Json::Quoted(name) == "\"" + name + "\"") {
    Require(Received(TarnConfigStore::MakeNotificationMessage(name, 7), piece) == name + " 7\n",
            "the library's own message is understood", name);
  }
}

const Target target("watch_messages", Run);

}  // namespace
}  // namespace Fuzz
