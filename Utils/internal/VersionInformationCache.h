#pragma once

#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "quillon/FileSystemUtils.h"

namespace quillon {

/// Keeps the results of FileSystemUtils::GetVersionInformation by path and language. Thread-safe. One
/// thread at a time reads a file and holds its path meanwhile; only a thread that asks for the same path
/// waits for it. Nothing is logged here, nor may be while a path is held.
class VersionInformationCache {
public:
    using Information = FileSystemUtils::VersionInformation;

    struct Kept {
        bool isKnown = false;  ///< the path is, in whatever language
        long long modificationTime = 0;
        /// Null unless it is kept for the file as it is now.
        std::shared_ptr<const Information> information;
        std::size_t paths = 0;
    };

    /// Lives as long as the process.
    static VersionInformationCache& Instance();

    /// Returns what is kept of a file that was changed at `modificationTime`. Without information the
    /// path is held for the caller, who calls Release() at the end. Returns nothing after a wait for
    /// another thread that held the path: the file may have changed.
    std::optional<Kept> Find(const std::string& path, const std::string& language,
                             long long modificationTime);
    void Release(const std::string& path);

    /// Keeps information; that of the path's other languages stays only when it is of the
    /// same time and `keepsLanguages` is true. The number of paths.
    std::size_t Store(const std::string& path, const std::string& language, long long modificationTime,
                      Information information, bool keepsLanguages);
    /// Forgets a path. The number that is left.
    std::size_t Drop(const std::string& path);
    void Clear();
    std::size_t Paths() const;

private:
    struct Entry {
        long long modificationTime = 0;
        std::map<std::string, std::shared_ptr<const Information>> languages;
    };

    VersionInformationCache() = default;

    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    std::unordered_map<std::string, Entry> m_entries;
    std::unordered_set<std::string> m_held;
};

}  // namespace quillon
