#include "content/ContentList.h"

#include <unordered_set>
#include <utility>

#include "common/Failure.h"
#include "common/ShownText.h"
#include "content/RemoteName.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/LsZFile.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr std::uint64_t kLargestList = 64 * 1024 * 1024;

std::string FaultOf(const LsZFile::FileFromLsZ& entry, const RemoteName& name,
                    std::unordered_set<std::string>& known) {
    if (*name.fault != '\0') return name.fault;
    if (entry.length < 0) return "has a negative length";
    if (!IsSha256(entry.crc)) return "has no SHA-256";
    return known.insert(KeyOf(name)).second ? "" : "is there twice";
}

ContentItem ItemOf(const LsZFile::FileFromLsZ& entry, RemoteName&& name, const std::string& folder) {
    const std::string below = StringUtils::StringVecToString(name.components, PathUtils::PathSep);
    return {PathUtils::CombinePaths(folder, below, PathUtils::PathSep), std::move(name.components),
            entry.length, StringUtils::ToLowercase(entry.crc)};
}

}  // namespace

bool ReadContentList(const std::string& list, const std::string& shownName, const std::string& folder,
                     std::vector<ContentItem>& items, InvocationResult& result) {
    const auto refuse = [&](const std::string& fault) {
        return Fail(InvocationResult::kUnusableContentList,
                    "The list '" + ShownText(shownName) + "' " + fault, result);
    };
    if (FileSystemUtils::GetFileSizeInBytes(list) > kLargestList) return refuse("is larger than 64 MiB");
    LsZFile content(list, &shownName);
    if (!content.ParsedOk()) return refuse("cannot be read or is not complete");
    std::unordered_set<std::string> known;
    for (const LsZFile::FileFromLsZ& entry : content.GetFiles()) {
        if (entry.isFolder) continue;  // folders come with their files
        RemoteName name = ReadRemoteName(entry.name);
        const std::string fault = FaultOf(entry, name, known);
        if (!fault.empty()) return refuse("is refused: its file '" + ShownText(entry.name) + "' " + fault);
        items.push_back(ItemOf(entry, std::move(name), folder));
    }
    return true;
}

}  // namespace quillon::agent
