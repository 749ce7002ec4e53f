#pragma once

namespace quillon::agent {

/// Marks an open temporary file as one that is being written. False when a process that takes it for a
/// leftover was quicker: then the file is lost.
bool LockTemporary(int file);
/// Removes the temporary files in an open directory that no process writes any more: those of a download that
/// was killed.
void RemoveLeftovers(int folder);

}  // namespace quillon::agent
