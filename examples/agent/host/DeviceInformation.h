#pragma once

#include <string>
#include <vector>

#include "quillon/IDeviceInformation.h"

namespace quillon::agent {

/// The device as it was when the agent started, so that a roll-over of the log asks the system for nothing.
class DeviceInformation final : public IDeviceInformation {
public:
    DeviceInformation();

    void LogDeviceInformation() override;

private:
    std::vector<std::string> m_lines;
};

}  // namespace quillon::agent
