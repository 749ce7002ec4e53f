#include "os/DeferredLog.h"

#include "base/OwnFigures.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/EntryOperation.h"

namespace quillon {

DeferredLog::~DeferredLog() = default;

void DeferredLog::WriteTo(ICLogger* logger) noexcept {
    const auto entries = std::exchange(m_entries, {});
    if (logger == nullptr) return;
    for (const auto& [level, text] : entries) {
        try {
            (logger->*detail::OperationOf(level))("%s", text.c_str());
        } catch (...) {  // the host's own logger; the entries that follow are none of its business
        }
    }
}

void DeferredLog::Write(Level level, const char* format, std::va_list arguments) {
    try {
        m_entries.emplace_back(level, StringUtils::Format(format, arguments));
    } catch (...) {  // no memory
        base::CountDroppedLogLine();
    }
}

}  // namespace quillon
