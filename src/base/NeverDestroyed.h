#pragma once

#include <cstddef>
#include <new>

namespace quillon::base {

/// A static object that lives as long as the process, in memory of the program's own: threads may use it
/// while the process ends, and nothing of the heap is taken for it.
template <class T>
class NeverDestroyed {
public:
    NeverDestroyed() { new (m_memory) T; }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;
    T& Get() noexcept { return *std::launder(reinterpret_cast<T*>(m_memory)); }

private:
    alignas(T) std::byte m_memory[sizeof(T)];
};

}  // namespace quillon::base
