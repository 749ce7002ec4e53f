#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "system/Channel.h"

namespace quillon::agent {

/// Writes answers to a client on a thread of its own, those that wait together at once. Answers of any
/// thread do not mix.
class AnswerWriter {
public:
    /// Calls `onGone` once, on the writer's thread, when the client does not take an answer.
    AnswerWriter(Channel& channel, std::function<void()> onGone);
    ~AnswerWriter() { Finish(); }
    AnswerWriter(const AnswerWriter&) = delete;
    AnswerWriter& operator=(const AnswerWriter&) = delete;

    /// Adds lines; while more than 16 MiB wait, or there is no memory, so does this. Does nothing
    /// when the client is gone.
    void Add(const std::string& lines);
    /// Writes what waits, and ends the thread. Nothing may be added afterwards.
    void Finish();

private:
    void Write();
    void Leave();
    bool TakeWaiting(std::string& lines);

    Channel& m_channel;
    const std::function<void()> m_onGone;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_waiting;
    bool m_isEnding = false;
    bool m_isBroken = false;
    std::thread m_thread;  // the last, as it uses the others
};

}  // namespace quillon::agent
