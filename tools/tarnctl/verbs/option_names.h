// Arguments that several verbs take.
#pragma once

namespace tarnctl {

inline constexpr const char* kFile = "FILE";
inline constexpr const char* kAllParts = "--all-parts";
inline constexpr const char* kAutomatic = "--auto";
inline constexpr const char* kForce = "--force";
inline constexpr const char* kReplace = "--replace";

}  // namespace tarnctl
