#include "advice/advice.h"

#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/type_administration.h"

#include "advice/type_suggestion.h"
#include "given/object_name.h"

#include <algorithm>
#include <exception>
#include <string_view>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::InstalledType;

bool HasInstances(const ConfigStoreObjectId& id) {
  const std::vector<InstalledType> types = TarnConfigStore::ListTypes();
  return std::any_of(types.begin(), types.end(), [&id](const InstalledType& type) {
    return type.hasInstances && type.key == id.key && type.group == id.group &&
           type.component == id.component;
  });
}

// A type was named where one of its instances is meant.
std::string NameInstances(const Given& given) {
  constexpr std::size_t kMost = 8;
  const ConfigStoreObjectId id = ParseObject(given.Text(kObject));
  if (!id.instanceId.empty() || !HasInstances(id)) {
    return {};
  }
  std::string names;
  std::size_t count = 0;
  for (const auto& stored : TarnConfigStore::ListStored(id)) {
    if (count++ < kMost) {
      names.append(names.empty() ? "" : ", ").append(stored.id.instanceId);
    }
  }
  std::string advice = ": " + FormatObject(id);
  advice += count == 0 ? " is a type with instances, of which none is stored; name one as "
                       : " has instances: ";
  advice += count == 0 ? FormatObject(id) + "/NAME" : names;
  advice += count > kMost ? " and " + std::to_string(count - kMost) + " more" : "";
  advice += count == 0 ? "" : "; name one";
  return advice +
         (count > 0 && given.Takes(kAllInstances) ? std::string(", or use ") + kAllInstances : "");
}

// The annotation's name is not what an operator knows.
std::string Translate(const std::string& message) {
  constexpr const char* kStagedTypes = "@rebootRequiredConfigStore";
  if (message.find(kStagedTypes) == std::string::npos) {
    return {};
  }
  return message.find("Empty") == std::string::npos
             ? " That is: types whose changes need a reboot. This one's take effect at once: "
               "`tarnctl set`, `update` or `delete` change it"
             : " That is: types whose changes need a reboot";
}

}  // namespace

std::string Advise(const Failure& failure, const Given& given) {
  try {
    if (failure.code == TarnConfigStore::CS_SCHEMA_NOT_FOUND) {
      return SuggestType(given);
    }
    const std::string translated = Translate(failure.message);
    const bool namesNone = failure.message.find("should contain instanceId") != std::string::npos;
    return !translated.empty()                 ? translated
           : namesNone && given.Takes(kObject) ? NameInstances(given)
                                               : std::string();
  } catch (const std::exception&) {
    // The failure at hand is the one to tell.
  }
  return {};
}

std::string Concerned(const Failure& failure, const Given& given) {
  const bool isOfStore =
      failure.exitCode == ExitCode::BUSY || failure.exitCode == ExitCode::PERMISSION;
  for (const char* name : {kObject, kType}) {
    if (isOfStore && given.Takes(name) && given.Has(name)) {
      return given.Text(name) + ": ";
    }
  }
  return {};
}

std::string UnderRoot(std::string message, const std::string& root) {
  for (const std::string_view path : {"/etc/kestrel", "/usr/lib/kestrel", "/run/kestrel"}) {
    for (std::size_t at = message.find(path); !root.empty() && at != std::string::npos;
         at = message.find(path, at + root.size() + 1)) {
      const std::size_t end = at + path.size();
      const bool isWhole = end == message.size() || message[end] == '/' || message[end] == ':';
      // Some messages have the root already.
      if (isWhole &&
          (at < root.size() || message.compare(at - root.size(), root.size(), root) != 0)) {
        message.insert(at, root);
      }
    }
  }
  return message;
}

}  // namespace tarnctl
