#include "support/ComThread.h"

namespace quillon::test {

ComThread::ComThread() = default;

ComThread::~ComThread() = default;

}  // namespace quillon::test
