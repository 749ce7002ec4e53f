#include <gtest/gtest.h>

#include <new>
#include <string>

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
    TheRefusedCalls() = {RefusedCalls::Memory, 0, 1, 0};
    EXPECT_THROW(static_cast<void>(binder.Bind(result)), std::bad_alloc);
    TheRefusedCalls() = {};
    EXPECT_EQ(result.errorMessage, "");
    EXPECT_TRUE(binder.Bind(result));
    EXPECT_EQ(path, std::string(100, 'x'));
}

}  // namespace quillon::test
