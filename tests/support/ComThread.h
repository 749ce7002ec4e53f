#pragma once

namespace quillon::test {

/// COM on the calling thread, for the life of this; nothing where there is none.
class ComThread {
public:
    ComThread();
    ~ComThread();
    ComThread(const ComThread&) = delete;
    ComThread& operator=(const ComThread&) = delete;
};

}  // namespace quillon::test
