#include "platform/ProcessApi.h"

#include <utility>

namespace quillon::platform {

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : m_id(std::exchange(other.m_id, 0)), m_handle(std::move(other.m_handle)) {}

}  // namespace quillon::platform
