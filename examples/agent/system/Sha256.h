#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace quillon::agent {

/// Computes a SHA-256, by the system's library; implemented once in posix/ and once
/// in win32/.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Add(const char* bytes, std::size_t count);
    /// Returns 64 lower-case digits, once; empty when the library failed at any point.
    std::string Finish();

private:
    struct State;

    std::unique_ptr<State> m_state;
};

}  // namespace quillon::agent
