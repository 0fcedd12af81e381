// The verbs.
#pragma once

#include "command_line.h"

namespace tarnctl {

/// Makes what is missing of the directories and databases.
Verb InitVerb();
/// Both stores in one file, and back.
Verb BackupVerb();
Verb RestoreVerb();
/// What is wrong with the stores, and mending it.
Verb DoctorVerb();
/// The key/value entries.
Verb EntryVerbs();

/// Configuration types.
Verb TypeVerbs();
/// One of them: a header for a type.
Verb GenerateCppVerb();

// Configuration objects, looked at.
Verb GetVerb();
Verb ListVerb();
Verb RevisionVerb();
Verb ExplainVerb();
Verb DescribeVerb();

// Configuration objects, written, or judged and not written.
Verb SetVerb();
Verb UpdateVerb();
Verb UnsetVerb();
Verb ResetVerb();
Verb DeleteVerb();
Verb ValidateVerb();
Verb EditVerb();
/// Several objects as one.
Verb TransactionVerb();

// Whole documents.
Verb ExportVerb();
Verb ImportVerb();
Verb ApplyVerb();
Verb DiffVerb();

/// What is staged for the next boot.
Verb NextBootVerbs();
/// All that waits for it, and what was changed meanwhile.
Verb PendingVerb();
/// The options that the kernel gets at the next boot.
Verb KernelOptionVerbs();
/// What the store knows of the host's boot, and the part that the host plays in it.
Verb BootVerbs();
/// One of them: making what is staged current.
Verb BootApplyVerb();

/// Notifications, as they arrive.
Verb WatchVerb();

// The tool itself.
Verb HelpVerb();
Verb CompletionVerb();
/// For the functions that CompletionVerb prints.
Verb CandidatesVerb();

}  // namespace tarnctl
