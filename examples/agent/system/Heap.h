#pragma once

namespace quillon::agent {

/// Has all threads take their memory from one heap; to be called before the first thread starts. Implemented
/// once in posix/ and once in win32/.
void ShareHeap();

}  // namespace quillon::agent
