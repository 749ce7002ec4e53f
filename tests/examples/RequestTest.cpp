#include "serve/Request.h"

#include <gtest/gtest.h>

#include "support/ForeignLocale.h"

namespace quillon::test {

TEST(Request, NumbersAreReadInEveryLocale) {
    for (const char* const name : {"C", "de_DE", "ps_AF"}) {
        SCOPED_TRACE(name);
        const ForeignLocale locale(name);
        agent::Request request;
        EXPECT_EQ(
            agent::ReadRequest(
                R"({"method":"m","parameters":{"real":1.5,"tiny":1e-999,"table":[{"r":-2.5e3}]}})", request),
            "");
        EXPECT_EQ(request.parameters["real"].real, 1.5);
        EXPECT_EQ(request.parameters["tiny"].real, 0.0);
        EXPECT_EQ(request.parameters["table"].text, R"([{"r":-2.5e3}])");
    }
}

}  // namespace quillon::test
