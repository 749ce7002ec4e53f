#pragma once

namespace quillon::agent {

/// Has SQLite keep the locks of its files until it gives them back itself. By default they are those of
/// POSIX, which a process loses as soon as it closes any handle of the file, such as that of a method that
/// has read it: other processes then write to the database at the same time. Call it before a file is opened.
/// Windows has no such locks.
void KeepDatabaseLocks();

}  // namespace quillon::agent
