#pragma once

#include <cstdarg>
#include <string>

namespace quillon {

/// The path of a logger without a file; lives as long as the library.
inline const std::string& NoLogPath() {
    static const std::string none;
    return none;
}

}  // namespace quillon

/// Defines the two operations of one level of a logger by its
/// `writer(Level, const char* format, std::va_list)`.
#define QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, level)             \
    void logger::level(const char* format, ...) {                       \
        std::va_list arguments;                                         \
        va_start(arguments, format);                                    \
        writer(Level::level, format, arguments);                        \
        va_end(arguments);                                              \
    }                                                                   \
    void logger::level##V(const char* format, std::va_list arguments) { \
        writer(Level::level, format, arguments);                        \
    }

/// Defines the twelve logging operations of a logger.
#define QUILLON_LOG_OPERATIONS(logger, writer)          \
    QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, Trace) \
    QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, Debug) \
    QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, Info)  \
    QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, Warn)  \
    QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, Error) \
    QUILLON_LOG_LEVEL_OPERATIONS(logger, writer, Fatal)
