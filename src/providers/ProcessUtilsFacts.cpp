#include <utility>

#include "platform/ModuleApi.h"
#include "platform/ProcessFactsApi.h"
#include "quillon/ProcessUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

bool ProcessUtils::IsSystemProcess(unsigned long pid) { return pid == 0 || pid == 4; }

bool ProcessUtils::GetCommandLineForProcess(unsigned long pid, std::string& commandLine) {
    commandLine.clear();
    const auto text = std::in_range<std::uint32_t>(pid)
                          ? platform::CommandLineOf(static_cast<std::uint32_t>(pid))
                          : std::nullopt;
    if (text) commandLine = StringUtils::WideStringToNarrow(*text);
    return text.has_value() || IsSystemProcess(pid);
}

std::string ProcessUtils::GetCurrentProcessExecutable() { return platform::ExecutablePath().value_or(""); }

long long ProcessUtils::GetPrivateWorkingSetForProcess(const HANDLE& process) {
    return platform::PrivateWorkingSet(process);
}

long long ProcessUtils::GetPrivateWorkingSetForProcess(const long& pid) {
    if (std::in_range<std::uint32_t>(pid)) {
        const auto process = platform::OpenReadableProcess(static_cast<std::uint32_t>(pid));
        if (process) return platform::PrivateWorkingSet(process.Get());
    }
    if (ICLogger* const logger = detail::RegisteredLoggerIfAny()) {
        logger->Debug("Unable to get a VM_READ handle for pid %ld", pid);
    }
    return 0;
}

void ProcessUtils::EnumerateProcessIds(std::vector<unsigned long>& ids) {
    const auto all = platform::ListProcessIds();
    if (all) ids.insert(ids.end(), all->begin(), all->end());
}

}  // namespace quillon
