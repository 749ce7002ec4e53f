#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace quillon::torture {

/// The calls that are told apart, in the order of KINDS in board.py.
enum Kind {
    Memory,
    Open,
    Read,
    Write,
    Rename,
    Sync,
    Folder,
    Spawn,
    Thread,
    Socket,
    LookupLater,
    LookupMemory,
    LookupSystem,
    Clock,
    kKindCount
};

constexpr std::size_t kMostPlaces = 1 << 16;
/// So many calls before the ordered one its place is looked for: threads do not always come in one order.
constexpr std::uint64_t kEarlier = 50;

/// What lies in the file between a process and who drives it (board.py): words of eight bytes in the
/// machine's order.
struct Board {
    std::atomic<std::uint64_t> made[kKindCount];  ///< calls of each kind
    std::atomic<std::uint64_t> refused;           ///< calls that were refused
    std::atomic<std::int64_t> live;               ///< blocks of memory that are not freed
    std::atomic<std::int64_t> liveBytes;          ///< what they hold, counted on Linux alone
    // Orders:
    std::atomic<std::uint64_t> kind;        ///< the kind of which calls are refused
    std::atomic<std::uint64_t> call;        ///< number of the call that fails, from 1; 0: none
    std::atomic<std::uint64_t> place;       ///< where the call must be as well; 0: anywhere
    std::atomic<std::uint64_t> isForEver;   ///< whether each one after it does
    std::atomic<std::uint64_t> showsPlace;  ///< whether it is told on standard error where the call was
    std::atomic<std::uint64_t> notes;       ///< whether the places of the calls of the kind are noted
    std::atomic<std::int64_t> ahead;        ///< seconds by which the clock of the day goes ahead
    // What the process holds, on Windows, where nobody outside Wine sees it:
    std::atomic<std::uint64_t> handles;
    std::atomic<std::uint64_t> threads;
    std::atomic<std::uint64_t> asked;     ///< set by who wants to know
    std::atomic<std::uint64_t> answered;  ///< the same once the two are counted
    std::atomic<std::uint64_t> ends;      ///< 1 to have the process asked to end, as the system does it
    std::uint64_t places[kMostPlaces];    ///< of the first calls of the kind, when they are noted
};

/// Tells call stacks apart, in the same way in every process: `base` returns the address at which the module
/// of an address begins, or 0, which ends the stack: what is found behind the first call of a thread is
/// chance. Never 0.
template <class Base>
std::uint64_t PlaceOf(void* const* frames, int count, Base base) {
    std::uint64_t hash = 1;
    for (int i = 0; i < count; ++i) {
        const std::uintptr_t begin = base(frames[i]);
        if (begin == 0) break;
        hash = (hash ^ (reinterpret_cast<std::uintptr_t>(frames[i]) - begin)) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 29;
    }
    return hash | 1;
}

/// Whether the place of a call is asked for: it costs more than most calls.
inline bool NeedsPlace(const Board& board, std::uint64_t number) {
    if (board.notes != 0) return number <= kMostPlaces;
    return board.place != 0 && board.refused == 0 && number + kEarlier >= board.call;
}

/// Whether the first refusal is due.
inline bool IsFirst(Board& board, std::uint64_t number, std::uint64_t place) {
    if (board.place == 0 ? number != board.call : place != board.place) return false;
    std::uint64_t none = 0;
    return board.refused.compare_exchange_strong(none, 1);
}

enum class Answer { Pass, Refuse, RefuseAndShow };

/// Counts a call and says what becomes of it; `place` returns where it is made.
template <class Place>
Answer Count(Board& board, Kind kind, Place place) {
    const std::uint64_t number = ++board.made[kind];
    if (board.call == 0 || kind != board.kind) return Answer::Pass;
    // In this one line, which is part of the stack.
    const std::uint64_t at = NeedsPlace(board, number) ? place() : 0;
    if (board.notes != 0 && at != 0) board.places[number - 1] = at;
    if (board.refused != 0) {
        if (board.isForEver == 0) return Answer::Pass;
        ++board.refused;
        return Answer::Refuse;
    }
    if (!IsFirst(board, number, at)) return Answer::Pass;
    return board.showsPlace != 0 ? Answer::RefuseAndShow : Answer::Refuse;
}

}  // namespace quillon::torture
