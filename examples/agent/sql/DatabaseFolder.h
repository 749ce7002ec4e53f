#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillon::agent {

/// Where the agent's databases are: a directory with a file for each name. Names are
/// told apart as SQLite tells its own, without regard to the case of ASCII letters.
/// Any byte may stand in a name: what is no lower-case letter, digit, '-' or '_' is
/// written in hexadecimal, so that a name can mean nothing to the file system. Thread-safe.
class DatabaseFolder {
public:
    static const char* __InterfaceId() { return "VntItf_DatabaseFolder"; }

    /// A library path, which means the working directory of this moment when it is relative; the directory is
    /// made when the first database is.
    explicit DatabaseFolder(const std::string& folder);

    const std::string& GetPath() const { return m_folder; }
    /// Returns the file of a database; nothing for a name that is empty or too long for a file.
    std::optional<std::string> FileOf(const std::string& name) const;
    /// In lower case, sorted. Throws std::runtime_error when the directory is there and cannot be listed.
    std::vector<std::string> GetNames() const;
    bool Contains(const std::string& name) const;
    /// Creates the directory, with those above it, when it is missing; false when that fails, see the
    /// last error.
    bool Make() const;

private:
    std::string m_folder;
};

}  // namespace quillon::agent
