// Whether the host is being upgraded.
#pragma once

/// 0 while no upgrade runs: there is no file then. Reads the file at each call: ask once an
/// operation, not once a row. Raises std::runtime_error with a message that says why when there is
/// one that cannot be read, is no regular file or holds anything but a decimal number. Thread-safe.
int GetUpgradeCtx();
