#include "logging/Backups.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/LogFileApi.h"

namespace quillon {

bool Backups::MoveAside() {
    std::vector<std::string> names;
    bool isFree = false;
    for (int number = 1; number <= m_most && !isFree; ++number) {
        std::string name = m_path + '.' + std::to_string(number);
        const platform::PathUse use = platform::UseOfPath(name);
        isFree = use == platform::PathUse::Free;
        if (use != platform::PathUse::Other) names.push_back(std::move(name));
    }
    if (names.empty()) {
        platform::SetLastErrorCode(base::kAccessDenied);
        return false;
    }
    if (!isFree && !platform::RemoveFile(names.back())) return false;
    for (std::size_t place = names.size() - 1; place > 0; --place) {
        if (!platform::MovePath(names[place - 1], names[place])) return false;
    }
    if (!platform::MovePath(m_path, names.front())) return false;
    m_newest = names.front();
    return true;
}

bool Backups::MoveBack() const { return platform::MovePath(m_newest, m_path); }

}  // namespace quillon
