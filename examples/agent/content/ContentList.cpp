#include "content/ContentList.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <unordered_set>

#include "common/Failure.h"
#include "common/ShownText.h"
#include "common/TemporaryName.h"
#include "content/RemoteName.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/LsZFile.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr std::uint64_t kLargestList = 64 * 1024 * 1024;

/// Tells names that may be the same file, and keeps eight bytes of each.
class KnownNames {
public:
    explicit KnownNames(const std::vector<ContentItem>& items) : m_items(items) {}

    /// Whether the items, to which the name is added next, have none such.
    bool Add(const RemoteName& name) {
        const std::string key = KeyOf(name);
        if (m_hashes.insert(std::hash<std::string>()(m_seed + key)).second) return true;
        return std::none_of(m_items.begin(), m_items.end(), [&key](const ContentItem& item) {
            return KeyOf(ReadRemoteName(item.name)) == key;
        });
    }

private:
    const std::vector<ContentItem>& m_items;
    /// So that no list can be made whose names have one hash.
    const std::string m_seed = MakeTemporaryName();
    std::unordered_set<std::uint64_t> m_hashes;
};

std::string FaultOf(const LsZFile::FileFromLsZ& entry, const RemoteName& name, KnownNames& known) {
    if (*name.fault != '\0') return name.fault;
    if (entry.length < 0) return "has a negative length";
    if (!IsSha256(entry.crc)) return "has no SHA-256";
    return known.Add(name) ? "" : "is there twice";
}

/// Takes the entry's texts over, so that there is one of each.
ContentItem TakeItem(LsZFile::FileFromLsZ& entry, const RemoteName& name) {
    ContentItem item{StringUtils::StringVecToString(name.components, PathUtils::PathSep), entry.length,
                     StringUtils::ToLowercase(entry.crc)};
    std::string().swap(entry.name);
    std::string().swap(entry.crc);
    return item;
}

}  // namespace

bool ReadContentList(const std::string& list, const std::string& shownName, std::vector<ContentItem>& items,
                     InvocationResult& result) {
    const auto refuse = [&](const std::string& fault) {
        return Fail(InvocationResult::kUnusableContentList,
                    "The list '" + ShownText(shownName) + "' " + fault, result);
    };
    if (FileSystemUtils::GetFileSizeInBytes(list) > kLargestList) return refuse("is larger than 64 MiB");
    LsZFile content(list, &shownName);
    if (!content.ParsedOk()) return refuse("cannot be read or is not complete");
    KnownNames known(items);
    items.reserve(content.GetFiles().size());
    for (LsZFile::FileFromLsZ& entry : content.GetFiles()) {
        if (entry.isFolder) continue;  // folders come with their files
        const RemoteName name = ReadRemoteName(entry.name);
        const std::string fault = FaultOf(entry, name, known);
        if (!fault.empty()) return refuse("is refused: its file '" + ShownText(entry.name) + "' " + fault);
        items.push_back(TakeItem(entry, name));
    }
    return true;
}

}  // namespace quillon::agent
