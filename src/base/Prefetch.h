#pragma once

#include "base/Sse2.h"

namespace quillon::base {

/// Asks the processor to fetch memory that is about to be read. The address need not be valid.
inline void Prefetch([[maybe_unused]] const void* address) {
#ifdef QUILLON_SSE2
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#endif
}

}  // namespace quillon::base
