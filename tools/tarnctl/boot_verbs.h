// The verbs that tell how the host boots, and those that play the process that boots it.
#pragma once

#include "output.h"

#include <string>

namespace tarnctl {

/// Prints what the store knows of the host's boot: whether it is under way and of what kind, whether
/// changes can be staged, what is staged, what waits to be accepted, and which types need a reboot.
/// Boot information that makes no sense is reported, and keeps nobody from the rest.
void ShowBootStatus(const Output& output);

/// Prints the kind of the boot, a number.
void ShowBootInfo(const Output& output);

/// Makes the staged changes current, with `applyRest` those that fit even when others do not; prints
/// what was applied and what was not with its findings, and ends the boot mode that staging began
/// when nothing stays staged. Raises ToolError INVALID when something does.
void ApplyStaged(bool applyRest, const Output& output);

/// What the host made of the values that waited for its boot.
enum class BootVerdict { ACCEPT, REJECT };

/// Makes the values that wait in an object, or in all instances of a type, the user's, or drops
/// them, and says on standard error how many there were. Rows that an upgrade left to be confirmed
/// are confirmed by the former, and stay as they are by the latter. ToolError NOT_FOUND when no such
/// object is stored.
void JudgeBoot(const std::string& object, BootVerdict verdict);

/// The same for everything that waits in the store.
void JudgeWholeBoot(BootVerdict verdict);

}  // namespace tarnctl
