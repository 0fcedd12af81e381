#include "given/given_document.h"

#include "tarnconfigstore/documents.h"

#include "store/type_schema.h"

#include <cstdint>
#include <limits>
#include <map>
#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;

// The types that a document names, each read once.
class DocumentTypes {
 public:
  std::optional<ValuePlace> Find(const ConfigStoreObjectId& id) {
    const auto [known, isNew] = types_.try_emplace(FormatObject(id));
    if (isNew) {
      known->second = Read(id);
    }
    return known->second ? std::optional(known->second->Root()) : std::nullopt;
  }

 private:
  // A type that is not installed is for the library to tell of.
  static std::unique_ptr<TypeSchema> Read(const ConfigStoreObjectId& id) {
    try {
      return std::make_unique<TypeSchema>(id);
    } catch (const TarnConfigStore::ConfigStoreException& error) {
      if (error.GetErrorCode() != TarnConfigStore::CS_SCHEMA_NOT_FOUND) {
        throw;
      }
      return nullptr;
    }
  }

  std::map<std::string, std::unique_ptr<TypeSchema>> types_;
};

constexpr const char* kLimit = "--limit";

}  // namespace

Argument LimitArgument() {
  return {.name = kLimit,
          .help = "The largest document that is read, instead of 256 MB",
          .valueName = "BYTES",
          .range = NumberRange{1, std::numeric_limits<std::uint32_t>::max()}};
}

std::size_t LimitOf(const Given& given) {
  return given.Number(kLimit).value_or(TarnConfigStore::kLongestDocument);
}

GivenData ReadDocument(const std::string& path, YamlNull null, std::size_t largest) {
  DocumentTypes types;
  const FindPlace findPlace = PlacesOfDocument(
      [&types](const std::string& component, const std::string& group, const std::string& key) {
        return types.Find({key, group, component});
      });
  return GivenData::Read(path, findPlace, null, Wanted::DOCUMENT, largest);
}

void LocateInDocument(const GivenData& document, const std::string& message,
                      const std::function<void()>& call) {
  try {
    call();
  } catch (const TarnConfigStore::ValidationException&) {
    Failure failure = DescribeCurrentException();
    if (!failure.details.empty()) {
      failure.message = message;
      failure.details = document.WithLines(std::move(failure.details));
    }
    throw ToolError(std::move(failure));
  }
}

}  // namespace tarnctl
