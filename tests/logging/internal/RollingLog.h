#pragma once

#include <ctime>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "logging/RollingFile.h"
#include "support/System.h"

namespace quillon::test {

/// A rolling file whose lines are nothing but texts; several threads may write.
class RollingLog {
public:
    explicit RollingLog(const std::string& path, std::function<void()> report = {})
        : m_file(path,
                 {std::move(report), [this](const std::string& text) { complaints.push_back(text); }, {}}) {}

    void Write(const std::string& text) {
        const std::lock_guard lock(m_mutex);
        m_file.Write(text + '\n', m_second);
        m_file.RollOverIfDue();
    }
    /// The file looks after its path in each second.
    void LetSecondPass() { ++m_second; }

    std::vector<std::string> complaints;

private:
    std::recursive_mutex m_mutex;
    std::int64_t m_second = 1;
    RollingFile m_file;
};

/// A line as it stands in the file.
inline std::string Line(const std::string& text) { return text + (kWindows ? "\r\n" : "\n"); }

}  // namespace quillon::test
