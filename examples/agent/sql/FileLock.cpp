#include "sql/FileLock.h"

#include "quillon/PathUtils.h"
#include "system/PrivateFile.h"

namespace quillon::agent {

FileLock::FileLock(const std::string& libraryPath, int waitMilliseconds) {
    const std::string file = libraryPath + ".lock";
    MakePrivateFile(file);
    sqlite3* handle = nullptr;
    m_code = sqlite3_open_v2(PathUtils::ToSystemPath(file).c_str(), &handle,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_handle.reset(handle);
    if (m_code != SQLITE_OK) return;
    sqlite3_busy_timeout(handle, waitMilliseconds);
    // Nothing is ever written, so there need be no journal beside the file.
    m_code = sqlite3_exec(handle, "PRAGMA journal_mode=MEMORY; BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
}

}  // namespace quillon::agent
