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
    /// Calls `onGone` once when the client does not take an answer, and `onRoom` whenever there is room
    /// again, both on the writer's thread.
    AnswerWriter(Channel& channel, std::function<void()> onGone, std::function<void()> onRoom);
    ~AnswerWriter() { Finish(); }
    AnswerWriter(const AnswerWriter&) = delete;
    AnswerWriter& operator=(const AnswerWriter&) = delete;

    /// Adds lines, whether there is room or not; while there is no memory, this waits. Does nothing when the
    /// client is gone.
    void Add(const std::string& lines);
    /// Returns whether 16 MiB wait at most. There always is room when the client is gone.
    bool HasRoom();
    /// Waits until there is room.
    void AwaitRoom();
    /// Writes what waits, and ends the thread. Nothing may be added afterwards.
    void Finish();

private:
    void Write();
    void Leave();
    bool IsFull() const;
    bool TakeWaiting(std::string& lines);

    Channel& m_channel;
    const std::function<void()> m_onGone;
    const std::function<void()> m_onRoom;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_waiting;
    bool m_isEnding = false;
    bool m_isBroken = false;
    std::thread m_thread;  // the last, as it uses the others
};

}  // namespace quillon::agent
