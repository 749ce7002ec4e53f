#include "system/StandardInput.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>

#include "quillon/ICLogger.h"
#include "quillon/ServiceLocator.h"
#include "system/SystemErrorText.h"
#include "system/posix/StopEvent.h"

namespace quillon::agent {

struct StandardInput::State {
    /// With errno.
    void Fail() {
        hasFailed = true;
        ServiceLocator::Get<ICLogger>()->Error("Standard input cannot be read: %s", ReasonOf(errno).c_str());
    }

    StopEvent stop;
    bool hasFailed = false;
};

StandardInput::StandardInput() : m_state(std::make_unique<State>()) {
    if (!m_state->stop.IsMade())
        throw std::runtime_error("Cannot wait for standard input: " + SystemErrorText(errno));
}
StandardInput::~StandardInput() = default;

std::size_t StandardInput::Read(char* bytes, std::size_t size) {
    const ssize_t count = m_state->stop.Read(STDIN_FILENO, bytes, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    m_state->Fail();
    return 0;
}

bool StandardInput::HasFailed() const { return m_state->hasFailed; }

void StandardInput::Stop() { m_state->stop.Set(); }

}  // namespace quillon::agent
