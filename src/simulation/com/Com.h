#pragma once

#include <atomic>
#include <cstdint>

namespace quillon::simulation {

/// Answers as COM does: 1 on a thread that has it, "too late" (0x80010119) when the
/// process has its security. Thread-safe.
class Com {
public:
    std::int32_t Initialize();
    void Uninitialize();
    std::int32_t InitializeSecurity();

    // --- For those who test ---

    /// Initialisations of the calling thread that are not taken back.
    int References() const;
    int SecurityCalls() const { return m_securityCalls; }
    /// Lets the next call fail with a code, once.
    void FailNextInitialize(std::int32_t code) { m_initializeFailure = code; }
    void FailNextSecurity(std::int32_t code) { m_securityFailure = code; }

private:
    std::atomic<int> m_securityCalls{0};
    std::atomic<bool> m_isSecure{false};
    std::atomic<std::int32_t> m_initializeFailure{0};
    std::atomic<std::int32_t> m_securityFailure{0};
};

/// The process's.
Com& TheCom();

}  // namespace quillon::simulation
