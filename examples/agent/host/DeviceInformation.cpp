#include "host/DeviceInformation.h"

#include <thread>

#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ServiceLocator.h"
#include "system/SystemFacts.h"

namespace quillon::agent {

DeviceInformation::DeviceInformation() {
    constexpr unsigned long long kMebibyte = 1'048'576;
    m_lines = {"Operating system: " + ReadSystemName(), "Host: " + ReadHostName(),
               "Processors: " + std::to_string(std::thread::hardware_concurrency()),
               "Memory: " + std::to_string(ReadMemorySize() / kMebibyte) + " MiB"};
}

void DeviceInformation::LogDeviceInformation() {
    auto* const logger = ServiceLocator::Get<ICLogger>(true);
    if (logger == nullptr) return;
    for (const std::string& line : m_lines) logger->Info("%s", LogText::OneLine(line).c_str());
}

}  // namespace quillon::agent
