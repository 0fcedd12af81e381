// How long the process waits for the management daemon, which may hang.
#pragma once

namespace DaemonPatience {

/// The longest that one message may take, in milliseconds: 100, or 0 once the daemon has let
/// somebody wait that long in vain. Whoever is told 0 tries without waiting.
int Limit() noexcept;

/// The daemon took a connection: it is worth waiting for again.
void NoteAnswer() noexcept;

/// The limit passed.
void NoteTimeout() noexcept;

// All of it is thread-safe, and goes on in the child of a fork as it was.

}  // namespace DaemonPatience
