#include "support/posix/RefusedCalls.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace quillon::test {

namespace {

constinit thread_local RefusedCalls t_refused;

}  // namespace

RefusedCalls& TheRefusedCalls() { return t_refused; }

bool RefusedCalls::IsRefused(Call made) {
    if (call != made || count == 0) return false;
    if (before > 0) {
        --before;
        return false;
    }
    --count;
    ++refused;
    return true;
}

bool RefuseCall(RefusedCalls::Call call, int code) {
    if (!TheRefusedCalls().IsRefused(call)) return false;
    errno = code;
    return true;
}

}  // namespace quillon::test

using quillon::test::RefusedCalls;
using quillon::test::TheRefusedCalls;

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

void* operator new(std::size_t size) {
    void* const memory = TheRefusedCalls().IsRefused(RefusedCalls::Memory) ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

#endif
