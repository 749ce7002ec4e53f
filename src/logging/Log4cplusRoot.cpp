#include "logging/Log4cplusRoot.h"

#include <log4cplus/configurator.h>
#include <log4cplus/helpers/loglog.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggerimpl.h>
#include <log4cplus/spi/loggingevent.h>
#include <log4cplus/thread/threads.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "logging/CustomRollingFileAppender.h"
#include "logging/Log4cplusEntry.h"
#include "logging/RollOverBanner.h"
#include "platform/ProcessStagesApi.h"
#include "platform/StandardStreamApi.h"
#include "platform/ThreadApi.h"

namespace quillon {

namespace {

constexpr const char* kFileAppender = "DefaultFileAppender";

// log4cplus keeps these to its own classes.

struct LoggerAccess : log4cplus::Logger {
    static log4cplus::spi::LoggerImpl& ImplOf(log4cplus::Logger& logger) {
        return *(logger.*(&LoggerAccess::value));
    }
};

struct ImplAccess : log4cplus::spi::LoggerImpl {
    static log4cplus::LogLevel& LevelOf(log4cplus::spi::LoggerImpl& impl) { return impl.*(&ImplAccess::ll); }
    static std::size_t CountAppenders(log4cplus::spi::LoggerImpl& impl) {
        const log4cplus::thread::MutexGuard guard(impl.appender_list_mutex);
        return (impl.*(&ImplAccess::appenderList)).size();
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

/// Never destroyed: threads may log while the process ends.
struct Shared {
    std::shared_ptr<LogOutput> output;
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

/// log4cplus keeps the identifier of the thread that has forked.
void ForgetThreadNumber() {
    const std::string& name = log4cplus::thread::getCurrentThreadName2();
    if (name.find_first_not_of("0123456789") == std::string::npos)
        log4cplus::thread::setCurrentThreadName2("");
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
}

Shared& TheShared() {
    static Shared& shared = *[] {
        auto* const made = new Shared;
        made->output = std::make_shared<LogOutput>(&WriteRollOverBanner, &Complain);
        return made;
    }();
    return shared;
}

void HandleStagesOnce() {
    static const bool isDone = [] {
        TheShared();
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

/// Only the appenders of a host take such events.
/// The entry is written already, whatever becomes of it there.
void WriteToGuests(ICLogger::Level level, std::string_view text) noexcept try {
    Shared& shared = TheShared();
    const LogOutput& output = *shared.output;
    const std::size_t own = (output.HasFile() ? 1U : 0U) + (output.HasConsole() ? 1U : 0U);
    shared.hasGuests = ImplAccess::CountAppenders(RootImpl()) > own;
    if (!shared.hasGuests) return;
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
    constexpr bool isLinux = std::filesystem::path::preferred_separator == '/';
    if (isLinux && log4cplus::Logger::getCurrentLoggers().empty() &&
        log4cplus::Logger::getRoot().getAllAppenders().empty())
        log4cplus::deinitialize();
    return isLinux;
}();

}  // namespace

LogOutput& TheLogOutput() { return *TheShared().output; }

bool HasLog4cplusEnded() { return TheShared().hasEnded.load(std::memory_order_acquire); }

void ConfigureRoot() {
    log4cplus::initialize();
    HandleStagesOnce();
    log4cplus::BasicConfigurator::doConfigure();
    Shared& shared = TheShared();
    const log4cplus::SharedAppenderPtr theirs = shared.root.getAllAppenders().at(0);
    const log4cplus::SharedAppenderPtr ours(new ConsoleAppender(shared.output));
    ours->setName(theirs->getName());
    const log4cplus::thread::MutexGuard guard(RootImpl().appender_list_mutex);
    shared.root.removeAppender(theirs);
    shared.root.addAppender(ours);
}

void InstallFile(const std::string& path) {
    HandleStagesOnce();
    PrepareRollOverBanner();
    Shared& shared = TheShared();
    // A service of the host may ask for it while the output writes its report.
    if (shared.output->HasFile()) return shared.output->OpenFile(path);
    if (const auto other = shared.root.getAppender(kFileAppender)) shared.root.removeAppender(other);
    const log4cplus::SharedAppenderPtr file(new CustomRollingFileAppender(path, shared.output));
    file->setName(kFileAppender);
    shared.root.addAppender(file);
}

void ShutRootDown() {
    Shared& shared = TheShared();
    shared.output->CloseFile();
    shared.output->CloseConsole();
    const Visit visit;
    if (!visit || shared.output->IsWritingHere()) return;  // the appenders stay without an output
    shared.root.removeAllAppenders();
    log4cplus::Logger::getDefaultHierarchy().shutdown();
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
    const bool isOutermost =
        m_isWithin ? shared.output->Write(ThreadName(), NameOf(m_level), text)
                   : shared.output->Write(std::to_string(platform::CurrentThreadId()), NameOf(m_level), text);
    if (isOutermost && m_isWithin) return WriteToGuests(m_level, text);
    // The lock of the entry that caused the report is still held here.
    if (!isOutermost && shared.hasGuests) shared.ofReports.emplace_back(m_level, text);
}

}  // namespace quillon
