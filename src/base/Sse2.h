#pragma once

/// Tells by QUILLON_SSE2 whether the processor's vectors of sixteen bytes may be used: every x86-64 has them.
/// Each use has a plain form beside it for other processors.
#if defined(__SSE2__) || defined(_M_X64)
#define QUILLON_SSE2 1
#include <emmintrin.h>
#endif
