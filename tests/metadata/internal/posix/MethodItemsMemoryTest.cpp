#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>

#include "quillon/MethodMetadata.h"
#include "support/posix/RefusedCalls.h"

namespace quillon::test {

TEST(MethodParameterMemory, ADefaultThatMemoryIsMissingForIsNone) {
    MethodParameter parameter;
    parameter.SetType(typeid(std::string));
    const Variant given("Path", std::string(100, 'x'));
    TheRefusedCalls() = {RefusedCalls::Memory, 0, 1};
    try {
        parameter.OptionalValue(typeid(std::string), given);
    } catch (const std::bad_alloc&) {
    }
    if (std::exchange(TheRefusedCalls(), {}).refused == 0) GTEST_SKIP() << "the heap is that of a sanitizer";
    Variant value;
    EXPECT_FALSE(parameter.GetOptionalValue(value));
    parameter.OptionalValue(typeid(std::string), given);
    EXPECT_TRUE(parameter.GetOptionalValue(value));
    EXPECT_EQ(value, given);
}

}  // namespace quillon::test
