#include "Utils/internal/VersionInformationCache.h"

#include <utility>

#include "base/OwnFigures.h"

namespace quillon {

VersionInformationCache& VersionInformationCache::Instance() {
    static VersionInformationCache& instance = []() -> VersionInformationCache& {
        auto& made = *new VersionInformationCache;
        base::RegisterCache("VersionInformation", [&made] { return made.Paths(); });
        return made;
    }();
    return instance;
}

std::optional<VersionInformationCache::Kept> VersionInformationCache::Find(const std::string& path,
                                                                           const std::string& language,
                                                                           long long modificationTime) {
    std::unique_lock lock(m_mutex);
    if (m_held.contains(path)) {
        m_released.wait(lock, [&] { return !m_held.contains(path); });
        return std::nullopt;
    }
    Kept kept;
    kept.paths = m_entries.size();
    if (const auto entry = m_entries.find(path); entry != m_entries.end()) {
        kept.isKnown = true;
        kept.modificationTime = entry->second.modificationTime;
        const auto found = entry->second.languages.find(language);
        const bool isSame = kept.modificationTime == modificationTime;
        if (isSame && found != entry->second.languages.end()) kept.information = found->second;
    }
    if (!kept.information) m_held.insert(path);
    return kept;
}

void VersionInformationCache::Release(const std::string& path) {
    {
        const std::lock_guard lock(m_mutex);
        m_held.erase(path);
    }
    m_released.notify_all();
}

std::size_t VersionInformationCache::Store(const std::string& path, const std::string& language,
                                           long long modificationTime, Information information,
                                           bool keepsLanguages) {
    auto shared = std::make_shared<const Information>(std::move(information));
    const std::lock_guard lock(m_mutex);
    Entry& entry = m_entries[path];
    if (!keepsLanguages || entry.modificationTime != modificationTime) entry.languages.clear();
    entry.modificationTime = modificationTime;
    entry.languages[language] = std::move(shared);
    return m_entries.size();
}

std::size_t VersionInformationCache::Drop(const std::string& path) {
    const std::lock_guard lock(m_mutex);
    m_entries.erase(path);
    return m_entries.size();
}

void VersionInformationCache::Clear() {
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

std::size_t VersionInformationCache::Paths() const {
    const std::lock_guard lock(m_mutex);
    return m_entries.size();
}

}  // namespace quillon
