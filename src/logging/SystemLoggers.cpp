#include "quillon/SystemLoggers.h"

#include <cstdint>
#include <new>
#include <utility>

#include "base/OwnFigures.h"
#include "platform/SystemLogApi.h"
#include "platform/ThreadApi.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

const char* PriorityOf(ICLogger::Level level) {
    static constexpr const char* kPriorities[] = {"7", "7", "6", "4", "3", "2"};
    return kPriorities[level];
}

/// A value may hold line feeds, so its length stands in front of it: eight bytes, the lowest first.
void AddField(std::string& datagram, const char* name, const std::string& value) {
    constexpr unsigned kBits = 8, kLengthBytes = 8, kByte = 0xFF;
    datagram.append(name).push_back('\n');
    std::uint64_t length = value.size();
    for (unsigned byte = 0; byte < kLengthBytes; ++byte, length >>= kBits)
        datagram.push_back(static_cast<char>(length & kByte));
    datagram.append(value).push_back('\n');
}

platform::EventKind KindOf(ICLogger::Level level) {
    if (level >= ICLogger::Level::Error) return platform::EventKind::Error;
    return level == ICLogger::Level::Warn ? platform::EventKind::Warning : platform::EventKind::Information;
}

/// Hands an entry over to the system; one that is not taken, or that there is no memory for, is lost.
template <class Take>
void HandOver(const Take& take) noexcept {
    try {
        if (take()) return;
    } catch (const std::bad_alloc&) {
    }
    base::CountDroppedLogLine();
}

}  // namespace

JournalLogger::JournalLogger(std::string identifier, std::string socket)
    : m_identifier(std::move(identifier)), m_socket(std::move(socket)) {}
JournalLogger::~JournalLogger() = default;

void JournalLogger::Write(Level level, const char* format, std::va_list arguments) {
    HandOver([&] {
        std::string datagram;
        AddField(datagram, "MESSAGE", StringUtils::Format(format, arguments));
        AddField(datagram, "PRIORITY", PriorityOf(level));
        AddField(datagram, "SYSLOG_IDENTIFIER", m_identifier);
        AddField(datagram, "TID", std::to_string(platform::CurrentThreadId()));
        return platform::SendToJournal(m_socket, datagram);
    });
}

EventLogLogger::EventLogLogger(std::string source) : m_source(std::move(source)) {}
EventLogLogger::~EventLogLogger() = default;

void EventLogLogger::Write(Level level, const char* format, std::va_list arguments) {
    HandOver([&] {
        return platform::ReportEntry(m_source, KindOf(level), StringUtils::Format(format, arguments));
    });
}

}  // namespace quillon
