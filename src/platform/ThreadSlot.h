#pragma once

#include <cstdint>
#include <optional>

namespace quillon::platform {

/// Holds one pointer for each thread, null at first. The pointer of a thread that ends is handed to a
/// function, unless it is null then. A thread_local object does not serve: some compilers free its memory
/// before its destructor runs. A slot is never given back, so it is for static objects that are not
/// destroyed.
class ThreadSlot {
public:
    using End = void (*)(void* value);

    explicit ThreadSlot(End end);

    void* Get() const noexcept;
    /// Returns false when the system has no slot or no memory; the pointer then stays the caller's.
    bool Set(void* value) const noexcept;

private:
    std::optional<std::uint32_t> m_index;
};

}  // namespace quillon::platform
