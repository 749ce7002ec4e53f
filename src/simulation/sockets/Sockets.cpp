#include "simulation/sockets/Sockets.h"

namespace quillon::simulation {

Sockets& Sockets::Process() {
    static Sockets& sockets = *new Sockets;
    return sockets;
}

bool Sockets::Start() {
    ++m_starts;
    if (m_isFailing) return false;
    ++m_running;
    return true;
}

void Sockets::Stop() {
    int running = m_running;
    while (running > 0 && !m_running.compare_exchange_weak(running, running - 1)) {
    }
}

}  // namespace quillon::simulation
