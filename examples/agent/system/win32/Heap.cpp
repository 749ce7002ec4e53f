#include "system/Heap.h"

namespace quillon::agent {

/// All threads have that of the C runtime.
void ShareHeap() {}

}  // namespace quillon::agent
