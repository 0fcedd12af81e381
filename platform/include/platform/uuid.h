// Random UUIDs, RFC 4122 version 4.
#pragma once

/// A new text of 36 characters that the caller releases with free(); null when memory is out.
char* UUID_CreateRandom();
