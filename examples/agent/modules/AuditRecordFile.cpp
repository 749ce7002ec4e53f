#include "modules/AuditRecordFile.h"

#include <memory>
#include <mutex>
#include <string>

#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/SystemAuditProxy.h"
#include "sql/FileLock.h"

namespace quillon::agent {

namespace {

constexpr int kMostAgents = 16;

struct Record {
    std::string path;  ///< empty: none
    std::unique_ptr<FileLock> lock;
};

std::string PathOf(const DatabaseFolder& folder, int number) {
    const std::string name = "audit-record" + (number == 1 ? std::string() : '.' + std::to_string(number));
    return PathUtils::CombinePaths(folder.GetPath(), name, PathUtils::PathSep);
}

bool IsThere(const std::string& path) {
    return FileSystemUtils::Exists(path) || FileSystemUtils::Exists(path + ".new");
}

/// Where there can be no lock nobody can write a record either, which the proxy tells.
Record Take(const DatabaseFolder& folder) {
    for (const bool isLeft : {true, false}) {
        for (int number = 1; number <= kMostAgents; ++number) {
            const std::string path = PathOf(folder, number);
            if (IsThere(path) != isLeft) continue;
            auto lock = std::make_unique<FileLock>(path, 0);
            if (!lock->IsBusy()) return {path, std::move(lock)};
        }
    }
    return {};
}

}  // namespace

void KeepAuditRecord(const DatabaseFolder& folder) {
    static std::mutex mutex;
    static auto* const own = new Record;  // held until the process ends, also by threads that outlive main()
    const std::lock_guard lock(mutex);
    if (own->path.empty()) *own = Take(folder);
    if (!own->path.empty()) SystemAuditProxy::KeepRecordIn(own->path);
}

}  // namespace quillon::agent
