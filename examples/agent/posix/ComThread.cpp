#include "ComThread.h"

namespace quillon::agent {

ComThread::ComThread() : m_isReady(true), m_isOurs(false) {}

ComThread::~ComThread() = default;

}  // namespace quillon::agent
