// The message texts behind error codes.
#pragma once

#include "tarnconfigstore/error_codes.h"

/// The printf template of a code: one "%s" at most, but for 1083 (two) and 1103 ("%d" and "%s"). A
/// code without an entry gives a text that says so. Never null, and never freed.
const char* ErrorMessageForId(TarnConfigStore::CSErrorCodes code) noexcept;
