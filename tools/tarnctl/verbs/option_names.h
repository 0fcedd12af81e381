// Arguments that several verbs take.
#pragma once

namespace tarnctl {

inline constexpr const char* kFile = "FILE";
inline constexpr const char* kKey = "KEY";
inline constexpr const char* kAllParts = "--all-parts";
inline constexpr const char* kAutomatic = "--auto";
inline constexpr const char* kForce = "--force";
inline constexpr const char* kFrom = "--from";
inline constexpr const char* kReplace = "--replace";

/// The key/value entries that mean something to the library and to the process that boots the host.
inline constexpr const char* kKnownKeys[] = {"BOOT_INFO", "BOOT_MODE", "IS_BOOT", "NOTIFY_KEELD"};

}  // namespace tarnctl
