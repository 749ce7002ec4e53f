#pragma once

#include <new>
#include <utility>

namespace quillon::test {

/// Refuses calls of one kind that this thread makes: calls of the C library, which the linker leads here (see
/// tests/CMakeLists.txt), and requests for memory by "new", which the sanitizers keep to themselves.
struct RefusedCalls {
    enum Call { None, Open, Write, ShortWrite, Rename, Stat, MakeDirectory, Control, Memory };

    Call call = None;
    int before = 0;   ///< calls that succeed first
    int count = 0;    ///< calls that are refused then
    int refused = 0;  ///< calls that were

    bool IsRefused(Call made);
};
RefusedCalls& TheRefusedCalls();
/// Returns whether the call has to fail; errno is then set.
bool RefuseCall(RefusedCalls::Call call, int code);

/// Does something without memory from one of its requests on; returns whether it got as far as that.
template <class Function>
bool Starve(int before, const Function& function) {
    TheRefusedCalls() = {RefusedCalls::Memory, before, 1'000'000};
    try {
        function();
    } catch (const std::bad_alloc&) {
    }
    return std::exchange(TheRefusedCalls(), {}).refused > 0;
}

}  // namespace quillon::test
