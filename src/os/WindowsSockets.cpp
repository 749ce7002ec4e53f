#include "quillon/WindowsSockets.h"

#include <mutex>

#include "platform/NetworkApi.h"
#include "quillon/ICLogger.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

// Never destroyed: threads may use sockets while the process ends.

std::mutex& InstanceMutex() {
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

std::mutex& SocketMutex() {
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

}  // namespace

WindowsSockets* WindowsSockets::m_pUniqueInstance = nullptr;

WindowsSockets::WindowsSockets() = default;
WindowsSockets::~WindowsSockets() = default;

WindowsSockets* WindowsSockets::GetInstance() {
    const std::lock_guard lock(InstanceMutex());
    if (m_pUniqueInstance == nullptr) m_pUniqueInstance = new WindowsSockets;
    return m_pUniqueInstance;
}

bool WindowsSockets::InitializeSockets() {
    {
        const std::lock_guard lock(SocketMutex());
        if (!m_initialized) m_initialized = platform::StartSockets();
        if (m_initialized) return true;
    }
    if (ICLogger* const logger = detail::RegisteredLogger()) logger->Error("WSAStartup failed");
    return false;
}

void WindowsSockets::ReleaseSockets() {
    const std::lock_guard lock(SocketMutex());
    platform::StopSockets();
    m_initialized = false;
}

}  // namespace quillon
