#include "providers/SilentLogger.h"

#include "quillon/StdoutLogger.h"

namespace quillon {

ICLogger& OrSilent(ICLogger* logger) {
    if (logger != nullptr) return *logger;
    // Never destroyed: a detached worker may outlive the static objects.
    static StdoutLogger& silent = *[] {
        auto* made = new StdoutLogger;
        made->SetLevel(ICLogger::Level::Fatal);
        return made;
    }();
    return silent;
}

}  // namespace quillon
