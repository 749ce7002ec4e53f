#pragma once

#include <atomic>

#include "torture/Board.h"

/// The state of the process whose calls are refused: for the library that is loaded into it.
namespace quillon::torture {

inline Board own{};  ///< counts while there is no file
inline Board* board = &own;
inline std::atomic<bool> isArmed{false};

/// Counts a call once the process has begun its main(), and says what becomes of it; `place` returns where it
/// is made.
template <class Place>
Answer CountArmed(Kind kind, Place place) {
    return isArmed.load(std::memory_order_relaxed) ? Count(*board, kind, place) : Answer::Pass;
}

}  // namespace quillon::torture
