#pragma once

#include <utility>

namespace quillon {

/// Runs a callable without arguments when it goes out of scope, on every path.
/// The callable must not throw.
template <class Function>
class [[nodiscard]] DestructorFunctor {
public:
    explicit DestructorFunctor(Function function) : m_function(std::move(function)) {}
    ~DestructorFunctor() { m_function(); }
    DestructorFunctor(const DestructorFunctor&) = delete;
    DestructorFunctor& operator=(const DestructorFunctor&) = delete;

private:
    Function m_function;
};

}  // namespace quillon
