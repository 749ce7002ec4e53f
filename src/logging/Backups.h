#pragma once

#include <string>
#include <utility>

namespace quillon {

/// Numbers the backups of a log file: "<path>.1" is the newest. What stands at such a name and is no regular
/// file is left alone and stepped over.
class Backups {
public:
    Backups(std::string path, int most) : m_path(std::move(path)), m_most(most) {}

    /// Moves the file to the first number, which may be open, and the backups before the first free number
    /// one up, so that attempts that fail on the file itself do not push out one old backup each. False on
    /// failure, see platform::LastError().
    bool MoveAside();
    /// Undoes the last MoveAside() as far as the file itself goes.
    bool MoveBack() const;

private:
    std::string m_path;
    int m_most;
    std::string m_newest;  ///< where MoveAside() put the file
};

}  // namespace quillon
