#pragma once

#include "quillon/ICLogger.h"

namespace quillon::detail {

using EntryOperation = void (ICLogger::*)(const char* format, ...);

/// Returns the operation that writes entries of a level.
inline EntryOperation OperationOf(ICLogger::Level level) {
    constexpr EntryOperation kOperations[] = {&ICLogger::Trace, &ICLogger::Debug, &ICLogger::Info,
                                              &ICLogger::Warn,  &ICLogger::Error, &ICLogger::Fatal};
    return kOperations[level];
}

}  // namespace quillon::detail
