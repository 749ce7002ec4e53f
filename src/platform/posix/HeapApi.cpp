#include "platform/HeapApi.h"

#include <cstdlib>  // defines __GLIBC__

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace quillon {

void platform::ReleaseFreeMemory() noexcept {
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}

}  // namespace quillon
