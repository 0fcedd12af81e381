// Whether the host is being upgraded.
#pragma once

/// 0 while no upgrade runs. Reads a file at each call: ask once an operation, not once a row. A
/// missing file is 0; content that is not a decimal number is logged and counts as 0. Thread-safe.
int GetUpgradeCtx();
