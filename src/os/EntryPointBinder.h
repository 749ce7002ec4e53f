#pragma once

#include <string>

#include "platform/ProcedureApi.h"

namespace quillon {

/// Returns whether the system has what came with version 6.0.
inline bool IsAtLeastVersion60() { return platform::Procedures().isSystemAtLeast(6, 0, 0); }
inline constexpr const char* kTooOldSystem = "Detected Windows XP or below";

/// Binds entry points of one module, and tells of the first one that is missing.
class EntryPointBinder {
public:
    explicit EntryPointBinder(HINSTANCE module) : m_module(module) {}

    /// After a missing function no other is looked for.
    template <class Function>
    EntryPointBinder& Bind(const char* name, Function*& function) {
        if (!m_reason.empty()) return *this;
        function = reinterpret_cast<Function*>(platform::Procedures().findProcedure(m_module, name));
        if (function == nullptr) m_reason = std::string("Entry-point for ") + name + " was not found";
        return *this;
    }

    /// Returns why binding failed; empty when all functions were found.
    const std::string& Reason() const { return m_reason; }

private:
    HINSTANCE m_module;
    std::string m_reason;
};

}  // namespace quillon
