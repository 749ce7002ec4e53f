// A GUID of DirectX's headers and one of the library's live in one source. CHECK_BEFORE says which header
// comes first; the other order needs QUILLON_NO_WINDOWS_NAMES.

#ifdef CHECK_BEFORE
#include <wsl/winadapter.h>
#else
#define QUILLON_NO_WINDOWS_NAMES
#endif

#include "quillon/UniqueIdentifier.h"

#ifndef CHECK_BEFORE
#include <wsl/winadapter.h>
#endif

using namespace quillon;

UniqueIdentifier Convert(const GUID& foreign) {
    windows::GUID ours{foreign.Data1, foreign.Data2, foreign.Data3, {}};
    for (int i = 0; i < 8; ++i) ours.Data4[i] = foreign.Data4[i];
    return UniqueIdentifier(ours);
}
