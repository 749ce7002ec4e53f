#include <dlfcn.h>

#include "LoadEntry.h"

const quillon::ModuleEntry& LoadEntry(const std::string& path) {
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const function = library == nullptr ? nullptr : ::dlsym(library, quillon::kModuleEntryName);
    const char* const reason = function == nullptr ? ::dlerror() : nullptr;
    return CheckedEntry(reinterpret_cast<quillon::ModuleEntryFunction>(function),
                        reason == nullptr ? "" : reason);
}
