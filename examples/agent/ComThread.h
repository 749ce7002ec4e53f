#pragma once

namespace quillon::agent {

/// Makes COM usable on the calling thread for its own life, which WMI needs on Windows.
class ComThread {
public:
    ComThread();
    ~ComThread();
    ComThread(const ComThread&) = delete;
    ComThread& operator=(const ComThread&) = delete;

    bool IsReady() const { return m_isReady; }

private:
    bool m_isReady;
    bool m_isOurs;
};

}  // namespace quillon::agent
