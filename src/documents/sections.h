// The names in a document.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace TarnConfigStore {

/// The parts of a row, each a section of a document.
enum class Section : unsigned { USER, AUTOMATIC, VITAL, CACHED, PENDING };
inline constexpr std::size_t kSections = 5;
/// The sections' names in a document, and what "metadata" calls their parts.
inline constexpr std::array<const char*, kSections> kSectionNames = {"config", "automatic", "vital",
                                                                     "cached", "pending"};
inline constexpr std::array<const char*, kSections> kPartNames = {"user", "automatic", "vital",
                                                                  "cached", "pending"};
inline constexpr const char* kStagedName = "staged";
inline constexpr const char* kMetadataName = "metadata";
inline constexpr int kDocumentFormat = 1;

inline constexpr const char* kFormatName = "format";
inline constexpr const char* kPartsName = "parts";
inline constexpr const char* kRedactedName = "redacted";
inline constexpr const char* kObjectsName = "objects";
inline constexpr const char* kInstanceName = "instance";
inline constexpr const char* kCreatedName = "created";
inline constexpr const char* kRevisionName = "revision";
inline constexpr const char* kVersionName = "version";
inline constexpr const char* kConfirmedName = "confirmed";
inline constexpr const char* kActionName = "action";
inline constexpr const char* kUserName = "user";
inline constexpr const char* kVitalName = "vital";
inline constexpr const char* kCachedName = "cached";

/// The actions of staged changes, by NextBootAction.
inline constexpr std::array<const char*, 3> kActionNames = {"set", "delete", "delete-instance"};

inline std::optional<Section> FindSection(std::string_view name) {
  for (std::size_t i = 0; i < kSections; ++i) {
    if (name == kSectionNames[i]) {
      return static_cast<Section>(i);
    }
  }
  return std::nullopt;
}

}  // namespace TarnConfigStore
