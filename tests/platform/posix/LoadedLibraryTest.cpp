#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "support/ChildMain.h"

namespace quillon::test {

/// unload-library: the program itself holds the same code already, so a child does it.
const ChildMode unloadLibrary("unload-library", [](const std::vector<std::string>&) {
    const std::string path = (ProgramFolder().parent_path() / "lib/libquillon.so").string();
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr || ::dlclose(library) != 0) return 1;
    return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD) != nullptr ? 0 : 2;
});

TEST(LoadedLibrary, StaysForTheThreadsThatAreLeftBehind) {
    const ChildOutput child = RunChild("unload-library");
    EXPECT_TRUE(child.succeeded) << child.err;
}

}  // namespace quillon::test
