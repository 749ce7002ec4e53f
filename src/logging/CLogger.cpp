#include "quillon/CLogger.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>

#include "base/NeverDestroyed.h"
#include "base/OwnFigures.h"
#include "base/PrintfFormat.h"
#include "logging/CallbackLogger.h"
#include "logging/Log4cplusEntry.h"
#include "logging/Log4cplusRoot.h"
#include "platform/ProcessStagesApi.h"
#include "quillon/LogText.h"

namespace quillon {

namespace {

struct Slot {
    std::mutex mutex;  // of changes
    std::unique_ptr<ICLogger> instance;
    std::atomic<ICLogger*> current = nullptr;  // the instance, for those who only look
};

Slot& TheSlot();

/// A thread that changes the instance does not exist in the child of a fork.
constexpr platform::StageHandlers kSlotHandlers = {
    [] { TheSlot().mutex.lock(); },
    [] { TheSlot().mutex.unlock(); },
    [] { new (&TheSlot().mutex) std::mutex; },
    [] {},
};

/// No memory of the heap may be needed: a process that has none may end the log.
Slot& TheSlot() {
    static Slot& slot = []() -> Slot& {
        static base::NeverDestroyed<Slot> kept;
        platform::HandleStages(kSlotHandlers);
        return kept.Get();
    }();
    return slot;
}

/// Puts a logger, or none, into the slot. The old logger is destroyed after the mutex is released, so
/// that a host's callback may ask for the instance meanwhile.
ICLogger* Replace(std::unique_ptr<ICLogger> instance) {
    Slot& slot = TheSlot();
    const std::lock_guard lock(slot.mutex);
    slot.instance.swap(instance);
    slot.current.store(slot.instance.get(), std::memory_order_release);
    return slot.instance.get();
}

}  // namespace

struct CLogger::Impl {
    std::string path;
};

ICLogger* CLogger::GetInstance() {
    Slot& slot = TheSlot();
    if (ICLogger* const current = slot.current.load(std::memory_order_acquire)) return current;
    const std::lock_guard lock(slot.mutex);
    if (!slot.instance) slot.instance.reset(new CLogger);
    slot.current.store(slot.instance.get(), std::memory_order_release);
    return slot.instance.get();
}

bool CLogger::HaveInstance() { return TheSlot().current.load(std::memory_order_acquire) != nullptr; }

void CLogger::ReleaseInstance() { Replace(nullptr); }

ICLogger* CLogger::SetLoggingCallback(Callback callback) {
    return Replace(std::make_unique<CallbackLogger>(std::move(callback)));
}

ICLogger* CLogger::ClearLoggingCallback() {
    ReleaseInstance();
    return GetInstance();
}

CLogger::CLogger() : LoggerBase(kNothing), m_impl(std::make_unique<Impl>()) {}
CLogger::~CLogger() = default;

void CLogger::InitializeLogging(const char* path, Level level) {
    if (IsInitialized()) return;

    ConfigureRoot();
    if (path != nullptr) m_impl->path = path;
    // Configuring log4cplus has removed the appender of a path that was set before.
    if (path != nullptr || !m_impl->path.empty()) InstallFile(m_impl->path);

    // The root's own level decides, which a host may change behind this logger's back.
    static_assert(kSeveritiesALevel == log4cplus::DEBUG_LOG_LEVEL);
    FollowSeverity(RootLevel());
    SetThreshold(Level::Trace);
    SetLevel(level);
}

bool CLogger::IsInitialized() const { return GetThreshold() != kNothing; }

void CLogger::StopLogging() {
    if (!IsInitialized()) return;

    SetThreshold(kNothing);
    FollowSeverity(nullptr);
    ShutRootDown();
    m_impl->path.clear();
}

const std::string& CLogger::GetPath() const { return m_impl->path; }

void CLogger::SetPath(const std::string& path) {
    constexpr const char* kAgain = "Logfile '%s' specified again";
    if (path.empty()) return Error(kAgain, LogText::OneLine(path).c_str());
    if (path == m_impl->path) return Warn(kAgain, LogText::OneLine(path).c_str());

    InstallFile(path);
    m_impl->path = path;
}

ICLogger::Level CLogger::SetLevel(Level level) {
    const Level previous = GetLevel();
    const auto mapped = ToLog4cplusLevel(level);
    if (IsInitialized() && mapped) SetRootLevel(*mapped);
    return previous;
}

ICLogger::Level CLogger::GetLevel() {
    return IsInitialized() ? FromLog4cplusLevel(*RootLevel()) : Level::Info;
}

void CLogger::Write(Level level, const char* format, std::va_list arguments) {
    constexpr std::size_t kLongest = 9'999;
    char buffer[kLongest + 1];
    try {
        const RootEntry entry(level);
        if (!entry.IsEnabled()) return;
        const int length = base::FormatBounded(buffer, sizeof buffer, format, arguments);
        if (length < 0) return entry.Write(std::string("Invalid Log format: ") + format);
        entry.Write({buffer, std::min(static_cast<std::size_t>(length), kLongest)});
    } catch (...) {
        // An entry that cannot be written must not fail the operation that reports by it.
        base::CountDroppedLogLine();
    }
}

}  // namespace quillon
