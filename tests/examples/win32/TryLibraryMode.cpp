#include "system/Console.h"
#include "system/SharedLibrary.h"

// The agent tries a module in another process of its own program, which is this one where a test has a host
// load modules.
namespace quillon::test {

namespace {

[[maybe_unused]] const bool isNotAsked = [] {
    agent::TryLibraryIfAsked(agent::GetArguments(0, nullptr));
    return true;
}();

}  // namespace

}  // namespace quillon::test
