#pragma once

#include <utility>

namespace quillon {

/// Runs a callable without arguments when it goes out of scope, on every path, on the thread
/// that leaves the scope. It guards what has no owning type of its own.
///
/// The callable must not throw: an exception would leave a destructor and end the process. It
/// cannot be copied, moved or dismissed, so that it runs exactly once; a capture by reference
/// must outlive it.
///
/// @code
/// std::FILE* const file = std::fopen("a.txt", "r");
/// const DestructorFunctor close([file] {
///     if (file != nullptr) std::fclose(file);
/// });
/// @endcode
template <class Function>
class [[nodiscard]] DestructorFunctor {
public:
    /// Keeps the callable, moved; it is not called yet.
    explicit DestructorFunctor(Function function) : m_function(std::move(function)) {}
    ~DestructorFunctor() { m_function(); }
    DestructorFunctor(const DestructorFunctor&) = delete;
    DestructorFunctor& operator=(const DestructorFunctor&) = delete;

private:
    Function m_function;
};

}  // namespace quillon
