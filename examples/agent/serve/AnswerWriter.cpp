#include "serve/AnswerWriter.h"

#include <utility>

#include "quillon/ThreadUtils.h"
#include "serve/AwaitMemory.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kMostWaiting = 16U << 20;
constexpr std::size_t kKept = 64U << 10;

}  // namespace

AnswerWriter::AnswerWriter(Channel& channel, std::function<void()> onGone, std::function<void()> onRoom)
    : m_channel(channel),
      m_onGone(std::move(onGone)),
      m_onRoom(std::move(onRoom)),
      m_thread([this] { Write(); }) {}

void AnswerWriter::Finish() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) m_thread.join();
}

void AnswerWriter::Add(const std::string& lines) {
    AwaitMemory([this, &lines] {
        const std::lock_guard lock(m_mutex);
        if (!m_isBroken) m_waiting += lines;
    });
    m_changed.notify_all();
}

/// The caller holds the lock.
bool AnswerWriter::IsFull() const { return m_waiting.size() > kMostWaiting; }

bool AnswerWriter::HasRoom() {
    const std::lock_guard lock(m_mutex);
    return !IsFull();
}

void AnswerWriter::AwaitRoom() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !IsFull(); });
}

void AnswerWriter::Write() {
    ThreadUtils::SetThreadName("answers");
    std::string lines;
    while (TakeWaiting(lines)) {
        m_changed.notify_all();
        m_onRoom();
        if (!m_channel.Write(lines)) return Leave();
    }
}

void AnswerWriter::Leave() {
    {
        const std::lock_guard lock(m_mutex);
        m_isBroken = true;
        m_waiting = {};
    }
    m_changed.notify_all();
    m_onGone();
    m_onRoom();
}

/// Moves what waits into `lines`, whose memory is used again unless it is large. False at the end.
bool AnswerWriter::TakeWaiting(std::string& lines) {
    lines.clear();
    if (lines.capacity() > kKept) lines = {};
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
    std::swap(lines, m_waiting);
    return !lines.empty();
}

}  // namespace quillon::agent
