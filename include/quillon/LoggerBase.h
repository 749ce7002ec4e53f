#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <limits>
#include <string>

#include "quillon/Export.h"
#include "quillon/ICLogger.h"

namespace quillon {

/// Implements the twelve logging operations of ICLogger over one: a logger derives from this class and
/// writes Write(). It starts without a file and at the level that its constructor is given. The level
/// may be read and changed while other threads log.
///
/// @code
/// class CerrLogger final : public quillon::LoggerBase {
///     void Write(Level, const char* format, std::va_list arguments) override {
///         const std::string text = quillon::StringUtils::Format(format, arguments);
///         std::cerr << text << '\n';
///     }
/// };
/// @endcode
class QUILLON_API LoggerBase : public ICLogger {
public:
    ~LoggerBase() override;

    /// Sets the level; the path is ignored.
    void InitializeLogging(const char* path, Level level) override;
    /// Returns true: such a logger needs no initialisation.
    bool IsInitialized() const override;
    /// Does nothing.
    void StopLogging() override;

    /// Format an entry by Write(); one below the level costs a comparison and nothing else.
    void Trace(const char* format, ...) final QUILLON_PRINTF(2, 3);
    void Debug(const char* format, ...) final QUILLON_PRINTF(2, 3);
    void Info(const char* format, ...) final QUILLON_PRINTF(2, 3);
    void Warn(const char* format, ...) final QUILLON_PRINTF(2, 3);
    void Error(const char* format, ...) final QUILLON_PRINTF(2, 3);
    void Fatal(const char* format, ...) final QUILLON_PRINTF(2, 3);

    /// Do the same with arguments that the caller has started.
    void TraceV(const char* format, std::va_list arguments) final QUILLON_PRINTF(2, 0);
    void DebugV(const char* format, std::va_list arguments) final QUILLON_PRINTF(2, 0);
    void InfoV(const char* format, std::va_list arguments) final QUILLON_PRINTF(2, 0);
    void WarnV(const char* format, std::va_list arguments) final QUILLON_PRINTF(2, 0);
    void ErrorV(const char* format, std::va_list arguments) final QUILLON_PRINTF(2, 0);
    void FatalV(const char* format, std::va_list arguments) final QUILLON_PRINTF(2, 0);

    /// Returns an empty text, which lives as long as the library.
    const std::string& GetPath() const override;
    /// Does nothing.
    void SetPath(const std::string& path) override;
    /// Sets the level and returns the previous one.
    Level SetLevel(Level level) override;
    Level GetLevel() override;

protected:
    /// A threshold above every level: no entry is written.
    static constexpr std::int32_t kNothing = std::numeric_limits<std::int32_t>::max();
    /// Severities are a finer measure: an entry of level L has the severity L times this.
    static constexpr std::int32_t kSeveritiesALevel = 10'000;

    /// Starts at a threshold, which is a level or kNothing.
    explicit LoggerBase(std::int32_t threshold = Level::Info);

    /// Writes one entry, on the thread that logs and with no lock held. It is called for entries that the
    /// level lets through only, maybe by several threads at once. `arguments` belong to the caller and may
    /// be read once. An exception reaches the caller of the logging operation.
    virtual void Write(Level level, const char* format, std::va_list arguments) QUILLON_PRINTF(3, 0) = 0;

    /// Returns the lowest level that is written, or kNothing.
    std::int32_t GetThreshold() const { return m_threshold.load(std::memory_order_acquire); }
    /// Lets entries from this level on through; what was written before this call is seen by Write().
    void SetThreshold(std::int32_t threshold);
    /// Lets entries from a severity on through that somebody else keeps and changes, whatever the threshold.
    /// The number must live as long as this object; null: the threshold decides again.
    void FollowSeverity(std::int32_t* lowest);

private:
    bool Passes(Level level) const {
        std::int32_t& lowest = *m_lowest.load(std::memory_order_acquire);
        return level * kSeveritiesALevel >= std::atomic_ref(lowest).load(std::memory_order_acquire);
    }

    std::atomic<std::int32_t> m_threshold;
    std::int32_t m_ownLowest;  ///< the threshold as a severity
    std::atomic<std::int32_t*> m_lowest{&m_ownLowest};
};

}  // namespace quillon
