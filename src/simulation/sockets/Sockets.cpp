#include "simulation/sockets/Sockets.h"

namespace quillon::simulation {

Sockets& Sockets::Process() {
    static Sockets& sockets = *new Sockets;
    return sockets;
}

bool Sockets::Start() {
    ++m_starts;
    return !m_isFailing;
}

}  // namespace quillon::simulation
