#include "quillon/ComInitialization.h"

#include <cstdint>
#include <iostream>
#include <string>

#include "platform/ComApi.h"
#include "quillon/ICLogger.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr std::int32_t kWasInitialized = 1;                       // S_FALSE
constexpr auto kTooLate = static_cast<std::int32_t>(0x80010119);  // RPC_E_TOO_LATE

/// Reports that COM, or the part of it in `what`, could not be initialised; returns false.
bool Report(const std::string& what, std::int32_t code) {
    const std::string text = StringUtils::GetErrorAsString(code);
    if (ICLogger* const logger = detail::RegisteredLoggerIfAny()) {
        logger->Error("Could not initialize %s, failed with: %s", what.c_str(), text.c_str());
    } else {
        std::cerr << "Could not initialize " + what + ", failed with: " + text + '\n' << std::flush;
    }
    return false;
}

}  // namespace

ComInitialization::ComInitialization() : m_initialized(Initialize()) {}

ComInitialization::~ComInitialization() {
    if (m_initialized) Uninitialize();
}

bool ComInitialization::Initialize() {
    const std::int32_t started = platform::InitializeCom();
    if (started == kWasInitialized) return true;
    if (started < 0) return Report("COM", started);
    const std::int32_t secured = platform::InitializeComSecurity();
    return secured >= 0 || secured == kTooLate || Report("COM security", secured);
}

void ComInitialization::Uninitialize() { platform::UninitializeCom(); }

}  // namespace quillon
