#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>

#include "quillon/ParameterBinder.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

TEST(ParameterBinderMemory, LackOfMemoryIsNoFaultOfTheCall) {
    MethodParameters parameters;
    parameters.scalars.Add("Path", std::string(100, 'x'));
    std::string path;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("Path", path);
    InvocationResult result;
    bool isThrown = false;
    TheRefusedCalls() = {RefusedCalls::Memory, 0, 1};
    try {
        static_cast<void>(binder.Bind(result));
    } catch (const std::bad_alloc&) {
        isThrown = true;
    }
    if (std::exchange(TheRefusedCalls(), {}).refused == 0) GTEST_SKIP() << "the heap is that of a sanitizer";
    EXPECT_TRUE(isThrown);
    EXPECT_EQ(result.errorMessage, "");
    EXPECT_TRUE(binder.Bind(result));
    EXPECT_EQ(path, std::string(100, 'x'));
}

}  // namespace quillon::test
