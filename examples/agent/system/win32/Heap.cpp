#include "system/Heap.h"

namespace quillon::agent {

/// A process has one.
void ShareHeap() {}

}  // namespace quillon::agent
