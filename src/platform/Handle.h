#pragma once

#include <utility>

namespace quillon::platform {

/// Owns one system handle. Traits gives `Type`, `Invalid()` and `Close(Type)`,
/// which must keep the thread's last error.
template <class Traits>
class [[nodiscard]] Handle {
public:
    using Type = typename Traits::Type;

    Handle() = default;
    explicit Handle(Type value) noexcept : m_value(value) {}
    ~Handle() { Reset(); }
    Handle(Handle&& other) noexcept : m_value(other.Release()) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    [[nodiscard]] Type Get() const noexcept { return m_value; }
    explicit operator bool() const noexcept { return m_value != Traits::Invalid(); }
    [[nodiscard]] Type Release() noexcept { return std::exchange(m_value, Traits::Invalid()); }
    void Reset(Type value = Traits::Invalid()) noexcept {
        const Type old = std::exchange(m_value, value);
        if (old != Traits::Invalid()) Traits::Close(old);
    }

private:
    Type m_value = Traits::Invalid();
};

/// The system's file handles: HANDLE on Windows, a descriptor elsewhere.
struct FileTraits {
#ifdef _WIN32
    using Type = void*;
    static Type Invalid() noexcept { return reinterpret_cast<void*>(-1); }
#else
    using Type = int;
    static Type Invalid() noexcept { return -1; }
#endif
    static void Close(Type value) noexcept;
};
using FileHandle = Handle<FileTraits>;

}  // namespace quillon::platform
