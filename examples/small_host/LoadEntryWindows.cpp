#include <quillon/StringUtils.h>
#include <windows.h>

#include "LoadEntry.h"

const quillon::ModuleEntry& LoadEntry(const std::string& path) {
    const std::wstring wide = quillon::StringUtils::NarrowStringToWide(path);
    const HMODULE library =
        ::LoadLibraryExW(wide.c_str(), nullptr,
                         LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_APPLICATION_DIR |
                             LOAD_LIBRARY_SEARCH_SYSTEM32);
    const FARPROC function =
        library == nullptr ? nullptr : ::GetProcAddress(library, quillon::kModuleEntryName);
    return CheckedEntry(reinterpret_cast<quillon::ModuleEntryFunction>(reinterpret_cast<void*>(function)),
                        "Error " + std::to_string(::GetLastError()) + " of the system");
}
