#include "logging/Log4cplusRoot.h"

#include <log4cplus/helpers/loglog.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>
#include <log4cplus/spi/loggingevent.h>
#include <log4cplus/thread/threads.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "logging/CustomRollingFileAppender.h"
#include "logging/JsonLock.h"
#include "logging/Log4cplusEntry.h"
#include "logging/RollOverBanner.h"
#include "platform/ProcessStagesApi.h"
#include "platform/StandardStreamApi.h"
#include "platform/ThreadApi.h"

namespace quillon {

namespace {

constexpr const char* kFileAppender = "DefaultFileAppender";
constexpr const char* kConsoleAppender = "STDOUT";  // as log4cplus's basic configuration calls it

constexpr bool kIsLinux = std::filesystem::path::preferred_separator == '/';

// log4cplus keeps these to its own classes.

struct LoggerAccess : log4cplus::Logger {
    static log4cplus::spi::LoggerImpl& ImplOf(log4cplus::Logger& logger) {
        return *(logger.*(&LoggerAccess::value));
    }
};

struct ImplAccess : log4cplus::spi::LoggerImpl {
    static log4cplus::LogLevel& LevelOf(log4cplus::spi::LoggerImpl& impl) { return impl.*(&ImplAccess::ll); }
    /// The caller holds the list's lock.
    static const log4cplus::SharedAppenderPtrList& AppendersOf(const log4cplus::spi::LoggerImpl& impl) {
        return impl.*(&ImplAccess::appenderList);
    }
};

/// An event that the output has written already.
class OwnEvent final : public log4cplus::spi::InternalLoggingEvent {
public:
    OwnEvent(ICLogger::Level level, const std::string& text)
        : InternalLoggingEvent("root", ToLog4cplusLevel(level).value_or(log4cplus::ERROR_LOG_LEVEL), text,
                               nullptr, 0) {}
    unsigned getType() const override { return kOwnEvent; }
};

void Complain(const std::string& text);

const std::shared_ptr<LogOutput>& KeptOutput() {
    static const auto& kept =
        *new const std::shared_ptr(std::make_shared<LogOutput>(&WriteRollOverBanner, &Complain));
    return kept;
}

template <class Kind>
Kind& KeptAppender(const char* name) {
    static Kind& kept = *[name] {
        auto* const made = new Kind(name, KeptOutput());
        made->addReference();
        return made;
    }();
    return kept;
}

/// Never destroyed: threads may log while the process ends. Nor are its parts when there is no memory for all
/// of them.
struct Shared {
    const std::shared_ptr<LogOutput> output = KeptOutput();
    CustomRollingFileAppender& file = KeptAppender<CustomRollingFileAppender>(kFileAppender);
    ConsoleAppender& console = KeptAppender<ConsoleAppender>(kConsoleAppender);
    log4cplus::Logger root = log4cplus::Logger::getRoot();  ///< keeps the level alive
    std::atomic<bool> hasEnded{false};
    std::atomic<int> visitors{0};  ///< threads that are within log4cplus
    std::atomic<bool> hasGuests{false};
    std::vector<std::pair<ICLogger::Level, std::string>> ofReports;  ///< the output's lock guards it
};

void Complain(const std::string& text) {
    // log4cplus's own diagnostics go to standard error, which nobody may read.
    if (!HasLog4cplusEnded() && platform::TakesText(platform::StandardStream::Error))
        log4cplus::helpers::getLogLog().error(text);
}

Shared& TheShared();

log4cplus::spi::LoggerImpl& RootImpl() { return LoggerAccess::ImplOf(TheShared().root); }

using RootGuard = log4cplus::thread::MutexGuard;

/// The caller holds the lock of the root's appenders.
bool IsAttached(const log4cplus::Appender& appender) {
    const auto& all = ImplAccess::AppendersOf(RootImpl());
    return std::any_of(all.begin(), all.end(), [&](const auto& each) { return each.get() == &appender; });
}

/// Takes the output's appenders from the root, for which no memory is needed.
void LeaveRoot() {
    Shared& shared = TheShared();
    const RootGuard guard(RootImpl().appender_list_mutex);
    shared.root.removeAppender(log4cplus::SharedAppenderPtr(&shared.file));
    shared.root.removeAppender(log4cplus::SharedAppenderPtr(&shared.console));
}

/// Enters log4cplus, unless it has ended; the end of the process waits until every thread has left it.
bool Enter() {
    Shared& shared = TheShared();
    shared.visitors.fetch_add(1);
    if (!shared.hasEnded) return true;
    shared.visitors.fetch_sub(1);
    return false;
}

void Leave() { TheShared().visitors.fetch_sub(1); }

/// Is within log4cplus while it lives.
class Visit {
public:
    ~Visit() {
        if (m_isWithin) Leave();
    }
    Visit() = default;
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    explicit operator bool() const { return m_isWithin; }

private:
    const bool m_isWithin = Enter();
};

void TakeLocks() {
    if (!HasLog4cplusEnded()) RootImpl().appender_list_mutex.lock();
    TheShared().output->Mutex().lock();
}

void GiveLocks() {
    TheShared().output->Mutex().unlock();
    if (!HasLog4cplusEnded()) RootImpl().appender_list_mutex.unlock();
}

/// log4cplus keeps the identifier of the thread that has forked. Without memory it stays: neither a fork nor
/// the end of the process may fail for it.
void ForgetThreadNumber() noexcept try {
    const std::string& name = log4cplus::thread::getCurrentThreadName2();
    if (name.find_first_not_of("0123456789") == std::string::npos)
        log4cplus::thread::setCurrentThreadName2("");
} catch (const std::bad_alloc&) {
}

void RenewLocks() {
    Shared& shared = TheShared();
    shared.output->Mutex().Renew();
    shared.visitors = 0;
    if (shared.hasEnded) return;
    std::construct_at(&RootImpl().appender_list_mutex);
    ForgetThreadNumber();
}

/// Lets the threads out of log4cplus, within a second, and none in again.
void EndLog4cplus() {
    constexpr int kLooks = 1'000;
    Shared& shared = TheShared();
    shared.hasEnded = true;
    for (int look = 0; look < kLooks && shared.visitors > 0; ++look)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    // On Linux what the host has to do at its end comes after this, and may log through log4cplus.
    if (!kIsLinux) LeaveRoot();
}

Shared& TheShared() {
    static Shared& shared = *new Shared;
    return shared;
}

void HandleStagesOnce() {
    static const bool isDone = [] {
        TheShared();
        TheJsonMutex();
        platform::HandleStages({&TakeLocks, &GiveLocks, &RenewLocks, &EndLog4cplus});
        return true;
    }();
    static_cast<void>(isDone);
}

void PassToGuests(ICLogger::Level level, std::string_view text) {
    RootImpl().callAppenders(OwnEvent(level, std::string(text)));
}

/// Takes what was logged within reports since the last time.
auto TakeReports() {
    const std::lock_guard lock(TheLogOutput().Mutex());
    return std::exchange(TheShared().ofReports, {});
}

/// Closes what a host has taken from the root, and looks for appenders of the host. Log4cplus's lock must not
/// be taken while the output's is held, as it is within a report.
void FollowRoot() {
    Shared& shared = TheShared();
    LogOutput& output = *shared.output;
    if (output.IsWritingHere()) return;
    const RootGuard guard(RootImpl().appender_list_mutex);
    const bool hasFile = IsAttached(shared.file), hasConsole = IsAttached(shared.console);
    if (!hasFile && output.HasFile()) output.CloseFile();
    if (!hasConsole && output.HasConsole()) output.CloseConsole();
    const std::size_t own = (hasFile ? 1U : 0U) + (hasConsole ? 1U : 0U);
    shared.hasGuests = ImplAccess::AppendersOf(RootImpl()).size() > own;
}

/// Only the appenders of a host take such events.
/// The entry is written already, whatever becomes of it there.
void WriteToGuests(ICLogger::Level level, std::string_view text) noexcept try {
    if (!TheShared().hasGuests) return;
    for (const auto& [reportLevel, reportText] : TakeReports()) PassToGuests(reportLevel, reportText);
    PassToGuests(level, text);
} catch (...) {
}

std::string_view NameOf(ICLogger::Level level) {
    static constexpr std::string_view kNames[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
    return kNames[level];
}

/// log4cplus starts threads when it is loaded, for asynchronous appenders that nobody has asked for yet. On
/// Windows it is built without them, and little may be done there while a library is loaded.
[[maybe_unused]] const bool threadsEnded = [] {
    if (kIsLinux && log4cplus::Logger::getCurrentLoggers().empty() &&
        log4cplus::Logger::getRoot().getAllAppenders().empty())
        log4cplus::deinitialize();
    return kIsLinux;
}();

/// Leaves the root before log4cplus's own static objects go, which ask for memory if they find an appender
/// there. The static objects of the host are gone by then.
struct LeavesRoot {
    ~LeavesRoot() {
        if (hasToLeave) LeaveRoot();
    }
    std::atomic<bool> hasToLeave{false};
} leavesRoot;

/// The caller holds the lock of the root's appenders.
void Attach(OutputAppender& appender) {
    if (!IsAttached(appender)) TheShared().root.addAppender(log4cplus::SharedAppenderPtr(&appender));
    leavesRoot.hasToLeave = true;
}

void CloseOutput() {
    TheShared().output->CloseFile();
    TheShared().output->CloseConsole();
}

}  // namespace

LogOutput& TheLogOutput() { return *TheShared().output; }

bool HasLog4cplusEnded() { return TheShared().hasEnded.load(std::memory_order_acquire); }

void ConfigureRoot() {
    log4cplus::initialize();
    HandleStagesOnce();
    Shared& shared = TheShared();
    const RootGuard guard(RootImpl().appender_list_mutex);
    shared.root.removeAllAppenders();
    shared.output->CloseFile();
    shared.root.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    shared.console.Renew();
    Attach(shared.console);
    shared.output->OpenConsole();
}

void InstallFile(const std::string& path) {
    HandleStagesOnce();
    PrepareRollOverBanner();
    Shared& shared = TheShared();
    // A service of the host may ask for it while the output writes its report.
    if (shared.output->HasFile() && shared.output->IsWritingHere()) return shared.output->OpenFile(path);
    const RootGuard guard(RootImpl().appender_list_mutex);
    const auto other = shared.root.getAppender(kFileAppender);
    if (other && other.get() != &shared.file) shared.root.removeAppender(other);
    shared.file.Renew();
    Attach(shared.file);
    shared.output->OpenFile(path);
}

void ShutRootDown() {
    Shared& shared = TheShared();
    const Visit visit;
    if (!visit || shared.output->IsWritingHere()) return CloseOutput();  // the appenders stay without it
    {
        const RootGuard guard(RootImpl().appender_list_mutex);
        CloseOutput();
        LeaveRoot();
    }
    try {
        log4cplus::Logger::getDefaultHierarchy().shutdown();
    } catch (...) {  // no memory: appenders of the host stay until the process ends
    }
}

std::int32_t* RootLevel() { return &ImplAccess::LevelOf(RootImpl()); }

void SetRootLevel(std::int32_t level) { TheShared().root.setLogLevel(level); }

RootEntry::RootEntry(ICLogger::Level level) : m_level(level), m_isWithin(Enter()) {}

RootEntry::~RootEntry() {
    if (m_isWithin) Leave();
}

bool RootEntry::IsEnabled() const {
    const auto number = ToLog4cplusLevel(m_level).value_or(log4cplus::ERROR_LOG_LEVEL);
    return !m_isWithin || TheShared().root.isEnabledFor(number);
}

void RootEntry::Write(std::string_view text) const {
    Shared& shared = TheShared();
    if (m_isWithin) FollowRoot();
    const bool isOutermost =
        m_isWithin ? shared.output->Write(ThreadName(), NameOf(m_level), text)
                   : shared.output->Write(std::to_string(platform::CurrentThreadId()), NameOf(m_level), text);
    if (isOutermost && m_isWithin) return WriteToGuests(m_level, text);
    // The lock of the entry that caused the report is still held here.
    if (!isOutermost && shared.hasGuests) shared.ofReports.emplace_back(m_level, text);
}

}  // namespace quillon
