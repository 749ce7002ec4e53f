#pragma once

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/InvocationResult.h"
#include "quillon/Variant.h"

namespace quillon {

/// Shows a result in the messages of GoogleTest, which finds this by its name.
inline void PrintTo(const InvocationResult& result, std::ostream* stream) {
    *stream << "code " << result.resultCode << ", message '" << result.errorMessage << "', "
            << testing::PrintToString(result.resultTable);
}

}  // namespace quillon

/// Matchers of GoogleMock for tables and results. This header needs GoogleMock; the rest of the kit does
/// not.
///
/// @code
/// EXPECT_THAT(result, testkit::Succeeds());
/// EXPECT_THAT(result.resultTable, testkit::Rows(ElementsAre(AllOf(testkit::Cell("Name", "disk"),
///                                                                 testkit::Cell("Size", 42LL)))));
/// @endcode
namespace quillon::testkit {

/// Returns copies of the rows.
inline std::vector<VariantList> RowsOf(const DataTable& table) { return {table.begin(), table.end()}; }

/// Matches a row that has a cell of that name (case-insensitive) with exactly this value and type: a text,
/// a long long, a double, a bool or a TimePoint.
MATCHER_P2(Cell, name, value,
           (negation ? "does not have the cell " : "has the cell ") +
               testing::PrintToString(Variant(name, value))) {
    const Variant* const cell = arg.Find(name);
    if (cell == nullptr) {
        *result_listener << "which has no such cell";
        return false;
    }
    *result_listener << "whose cell is " << (cell->IsNull() ? "null" : "'" + cell->AsString() + "'");
    return *cell == Variant(cell->GetName(), value);
}

/// Matches a row whose cell of that name is null.
MATCHER_P(NullCell, name,
          std::string(negation ? "does not have the null cell " : "has the null cell ") + name) {
    const Variant* const cell = arg.Find(name);
    if (cell == nullptr) *result_listener << "which has no such cell";
    return cell != nullptr && cell->IsNull();
}

/// Matches a table whose rows, a container of VariantList, match.
template <class Matcher>
auto Rows(Matcher matcher) {
    return testing::ResultOf(
        "rows", [](const DataTable& table) { return RowsOf(table); }, matcher);
}

/// Matches a result of an invocation that succeeded.
MATCHER(Succeeds, negation ? "does not succeed" : "succeeds") {
    *result_listener << "whose code is " << arg.resultCode << " and whose message is '" << arg.errorMessage
                     << "'";
    return arg.resultCode == InvocationResult::kSucceeded && arg.errorMessage.empty();
}

/// Matches a result of an invocation that failed with this code and a message that matches.
template <class Matcher>
auto FailsWith(int code, Matcher message) {
    return testing::AllOf(testing::Field("resultCode", &InvocationResult::resultCode, code),
                          testing::Field("errorMessage", &InvocationResult::errorMessage, message));
}

}  // namespace quillon::testkit
