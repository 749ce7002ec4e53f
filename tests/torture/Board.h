#pragma once

#include <atomic>
#include <cstdint>

namespace quillon::torture {

enum Kind { Memory, Open, Read, Write, Rename, Sync, Folder, Spawn, Thread, Socket, Clock, kKindCount };

/// What lies in the file between a process and who drives it (board.py): words of eight bytes in the
/// machine's order.
struct Board {
    std::atomic<std::uint64_t> made[kKindCount];  ///< calls of each kind
    std::atomic<std::uint64_t> refused;           ///< calls that were refused
    std::atomic<std::int64_t> live;               ///< blocks of memory that are not freed
    // Orders:
    std::atomic<std::uint64_t> kind;        ///< the kind of which calls are refused
    std::atomic<std::uint64_t> call;        ///< number of the call that fails, from 1; 0: none
    std::atomic<std::uint64_t> isForEver;   ///< whether each one after it does
    std::atomic<std::uint64_t> showsPlace;  ///< whether it is told on standard error where the call was
    std::atomic<std::int64_t> ahead;        ///< seconds by which the clock of the day goes ahead
    // What the process holds, on Windows, where nobody outside Wine sees it:
    std::atomic<std::uint64_t> handles;
    std::atomic<std::uint64_t> threads;
    std::atomic<std::uint64_t> asked;     ///< set by who wants to know
    std::atomic<std::uint64_t> answered;  ///< the same once the two are counted
};

enum class Answer { Pass, Refuse, RefuseAndShow };

/// Counts a call and says what becomes of it.
inline Answer Count(Board& board, Kind kind) {
    const std::uint64_t number = ++board.made[kind];
    const std::uint64_t call = board.call;
    if (call == 0 || kind != board.kind || number < call || (number > call && board.isForEver == 0))
        return Answer::Pass;
    ++board.refused;
    return number == call && board.showsPlace != 0 ? Answer::RefuseAndShow : Answer::Refuse;
}

}  // namespace quillon::torture
