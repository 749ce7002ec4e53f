#include "platform/ole/ComError.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <new>
#include <stdexcept>

namespace quillon::platform {

void RaiseComError(HRESULT code) {
    if (code == E_OUTOFMEMORY) throw std::bad_alloc();
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "COM error 0x%08x", static_cast<std::uint32_t>(code));
    throw std::runtime_error(text.data());
}

}  // namespace quillon::platform
