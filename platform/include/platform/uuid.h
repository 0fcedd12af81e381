// Random UUIDs, RFC 4122 version 4.
#pragma once

/// A new text of 36 characters, lower case, that the caller releases with free(); null when memory
/// is out. Thread-safe.
char* UUID_CreateRandom();
