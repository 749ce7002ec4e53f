#pragma once

#include <cstddef>
#include <memory>

namespace quillon::agent {

/// The process's standard input, as a channel reads it.
class StandardInput {
public:
    StandardInput();
    ~StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

    std::size_t Read(char* bytes, std::size_t size);
    /// Returns whether a Read() has failed, which it has logged.
    bool HasFailed() const;
    void Stop();

private:
    struct State;

    std::unique_ptr<State> m_state;
};

}  // namespace quillon::agent
