#include "providers/SilentLogger.h"

#include "quillon/LoggerBase.h"

namespace quillon {

namespace {

class SilentLogger final : public LoggerBase {
public:
    SilentLogger() : LoggerBase(kNothing) {}

private:
    void Write(Level, const char*, std::va_list) override {}
};

}  // namespace

ICLogger& OrSilent(ICLogger* logger) {
    if (logger != nullptr) return *logger;
    // Never destroyed: a detached worker may outlive the static objects.
    static ICLogger& silent = *new SilentLogger;
    return silent;
}

}  // namespace quillon
