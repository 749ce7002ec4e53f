#include "quillon/CLogger.h"

#include <log4cplus/configurator.h>
#include <log4cplus/hierarchy.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>

#include <mutex>
#include <utility>

#include "base/OwnFigures.h"
#include "logging/CallbackLogger.h"
#include "logging/CustomRollingFileAppender.h"
#include "logging/Log4cplusEntry.h"
#include "logging/RollOverBanner.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

constexpr const char* kPattern = "%d{%Y-%m-%d %H:%M:%S.%q} [%5T] %-5p - %m%n";
constexpr const char* kFileAppender = "DefaultFileAppender";

struct Slot {
    std::mutex mutex;
    std::unique_ptr<ICLogger> instance;
};

/// Never destroyed: threads may log while the process ends.
Slot& TheSlot() {
    static Slot& slot = *new Slot;
    return slot;
}

/// Puts a logger, or none, into the slot. The old logger is destroyed after the mutex is released, so
/// that a host's callback may ask for the instance meanwhile.
ICLogger* Replace(std::unique_ptr<ICLogger> instance) {
    Slot& slot = TheSlot();
    const std::lock_guard lock(slot.mutex);
    slot.instance.swap(instance);
    return slot.instance.get();
}

std::unique_ptr<log4cplus::Layout> NewLayout() {
    return std::make_unique<log4cplus::PatternLayout>(kPattern);
}

void InstallFileAppender(const std::string& path) {
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (const auto old = root.getAppender(kFileAppender)) root.removeAppender(old);
    PrepareRollOverBanner();
    log4cplus::SharedAppenderPtr file(new CustomRollingFileAppender(path, &WriteRollOverBanner));
    file->setName(kFileAppender);
    file->setLayout(NewLayout());
    root.addAppender(file);
}

}  // namespace

struct CLogger::Impl {
    std::string path;
    log4cplus::Logger logger;
};

ICLogger* CLogger::GetInstance() {
    Slot& slot = TheSlot();
    const std::lock_guard lock(slot.mutex);
    if (!slot.instance) slot.instance.reset(new CLogger);
    return slot.instance.get();
}

bool CLogger::HaveInstance() {
    Slot& slot = TheSlot();
    const std::lock_guard lock(slot.mutex);
    return slot.instance != nullptr;
}

void CLogger::ReleaseInstance() { Replace(nullptr); }

ICLogger* CLogger::SetLoggingCallback(Callback callback) {
    return Replace(std::make_unique<CallbackLogger>(std::move(callback)));
}

ICLogger* CLogger::ClearLoggingCallback() {
    ReleaseInstance();
    return GetInstance();
}

// The threshold is log4cplus's own level, where a suppressed entry sees it for one comparison.
CLogger::CLogger() : LoggerBase(kNothing), m_impl(std::make_unique<Impl>()) {}
CLogger::~CLogger() = default;

void CLogger::InitializeLogging(const char* path, Level level) {
    if (IsInitialized()) return;

    log4cplus::initialize();
    log4cplus::BasicConfigurator::doConfigure();
    log4cplus::setThreadPoolSize(0);
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.getAllAppenders().at(0)->setLayout(NewLayout());
    if (path != nullptr) m_impl->path = path;
    // Configuring log4cplus has removed the appender of a path that was set before.
    if (path != nullptr || !m_impl->path.empty()) InstallFileAppender(m_impl->path);

    m_impl->logger = root;
    SetThreshold(FromLog4cplusLevel(root.getLogLevel()));
    SetLevel(level);
}

bool CLogger::IsInitialized() const { return GetThreshold() != kNothing; }

void CLogger::StopLogging() {
    if (!IsInitialized()) return;

    SetThreshold(kNothing);
    m_impl->logger.removeAllAppenders();
    log4cplus::Logger::getDefaultHierarchy().shutdown();
    m_impl->path.clear();
}

const std::string& CLogger::GetPath() const { return m_impl->path; }

void CLogger::SetPath(const std::string& path) {
    constexpr const char* kAgain = "Logfile '%s' specified again";
    if (path.empty()) return Error(kAgain, path.c_str());
    if (path == m_impl->path) return Warn(kAgain, path.c_str());

    InstallFileAppender(path);
    m_impl->path = path;
}

ICLogger::Level CLogger::SetLevel(Level level) {
    const Level previous = GetLevel();
    const auto mapped = ToLog4cplusLevel(level);
    if (!IsInitialized() || !mapped) return previous;

    m_impl->logger.setLogLevel(*mapped);
    SetThreshold(level);
    return previous;
}

ICLogger::Level CLogger::GetLevel() {
    return IsInitialized() ? FromLog4cplusLevel(m_impl->logger.getLogLevel()) : Level::Info;
}

void CLogger::Write(Level level, const char* format, std::va_list arguments) {
    try {
        WriteEntry(m_impl->logger, level, StringUtils::Format(format, arguments));
    } catch (...) {
        // An entry that cannot be written must not fail the operation that reports by it.
        base::CountDroppedLogLine();
    }
}

}  // namespace quillon
