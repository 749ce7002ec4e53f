#include "system/Heap.h"

#include <malloc.h>

namespace quillon::agent {

/// glibc gives most threads a heap of their own, each of which keeps what is free between blocks that live.
void ShareHeap() {
#ifdef __GLIBC__
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

}  // namespace quillon::agent
