#include "content/ContentProvider.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "common/Failure.h"
#include "common/ShownText.h"
#include "content/ContentCopy.h"
#include "content/ContentList.h"
#include "content/FileUrl.h"
#include "content/RemoteName.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ParameterBinder.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"
#include "quillon/WayfarProviderWrapper.h"

namespace quillon::agent {

namespace {

bool TakeUrl(const char* parameter, const std::string& url, std::string& path, InvocationResult& result) {
    path = PathOfFileUrl(url);
    return !path.empty() ||
           RefuseParameter('\'' + std::string(parameter) + "' parameter is no URL of a file", result);
}

bool OpenDestination(const std::string& path, DestinationFolder& folder, InvocationResult& result) {
    if (path.empty()) return RefuseParameter("The local path cannot be empty", result);
    const std::string fault = folder.Open(path);
    return fault.empty() ||
           Fail(InvocationResult::kSystemFailure, "Cannot open folder '" + path + "': " + fault, result);
}

/// The sizes are a list's: their sum may be past the range.
std::int64_t SizeOf(const std::vector<ContentItem>& items) {
    std::int64_t size = 0;
    for (const ContentItem& item : items)
        size += std::min(item.size, std::numeric_limits<std::int64_t>::max() - size);
    return size;
}

VariantList RowOf(const ContentItem& item, const CopyOutcome& outcome) {
    return VariantList(Variant("Name", item.name), Variant("Size", static_cast<long long>(item.size)),
                       Variant::StringOrNullVariant("Fault", outcome.fault));
}

/// Copies files one after the other, and puts as many of them in place at once as one sync is worth.
class Download {
public:
    Download(const std::vector<ContentItem>& items, const std::string& source, DestinationFolder& destination,
             InvocationResult& result)
        : m_items(items),
          m_source(source),
          m_destination(destination),
          m_result(result),
          m_progress(SizeOf(items)) {}

    /// A row for each file; the first fault gives the code.
    void Run() {
        for (const ContentItem& item : m_items) {
            Prepare(item);
            if (m_prepared.back().isAborted) {
                const CopyOutcome aborted = m_prepared.back();
                m_prepared.pop_back();
                m_files.pop_back();
                Commit();
                Fail(aborted.code, aborted.fault, m_result);
                return;
            }
            if (m_files.size() == kMostFiles || m_bytes >= kMostBytes) Commit();
        }
        Commit();
        if (m_failures > 0) Report();
    }

private:
    static constexpr std::size_t kMostFiles = 100;  // each holds two handles
    static constexpr std::int64_t kMostBytes = 16 * 1024 * 1024;

    void Prepare(const ContentItem& item) {
        const std::string source = PathUtils::CombinePaths(m_source, item.name, PathUtils::PathSep);
        std::unique_ptr<NewFile> file;
        CopyOutcome outcome = PrepareContent(item, source, m_destination, m_progress, file);
        if (outcome.code == InvocationResult::kSystemFailure && !outcome.isAborted && HoldsFiles()) {
            Commit();  // their handles may be what the system would not give any more
            outcome = PrepareContent(item, source, m_destination, m_progress, file);
        }
        m_files.push_back(std::move(file));
        m_prepared.push_back(std::move(outcome));
        m_bytes += std::min(item.size, kMostBytes);
    }

    bool HoldsFiles() const {
        return std::any_of(m_files.begin(), m_files.end(), [](const auto& file) { return file != nullptr; });
    }

    void Commit() {
        const std::vector<CopyOutcome> committed = CommitContent(m_destination, m_files);
        for (std::size_t i = 0; i < committed.size(); ++i)
            Add(m_items[m_done++], m_prepared[i].code != 0 ? m_prepared[i] : committed[i]);
        m_prepared.clear();
        m_bytes = 0;
    }

    void Add(const ContentItem& item, const CopyOutcome& outcome) {
        m_result.resultTable.AddRow(RowOf(item, outcome));
        if (outcome.code == 0 || ++m_failures > 1) return;
        m_result.resultCode = outcome.code;
        m_first = '\'' + ShownText(item.name) + "' " + outcome.fault;
    }

    void Report() {
        Fail(m_result.resultCode,
             std::to_string(m_failures) + " of " + std::to_string(m_items.size()) +
                 " files could not be downloaded; the first: " + m_first,
             m_result);
    }

    const std::vector<ContentItem>& m_items;
    const std::string& m_source;
    DestinationFolder& m_destination;
    InvocationResult& m_result;
    Progress m_progress;
    std::vector<std::unique_ptr<NewFile>> m_files;  ///< null where there is nothing to put in place
    std::vector<CopyOutcome> m_prepared;
    std::int64_t m_bytes = 0;
    std::size_t m_done = 0, m_failures = 0;
    std::string m_first;
};

void DownloadFolder(const MethodParameters& parameters, InvocationResult& result) {
    std::string folderUrl, listUrl, local, folder, list;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("RemoteContentFolderUrl", folderUrl);
    binder.AddMandatoryBinding("RemoteLszUrl", listUrl);
    binder.AddMandatoryBinding("LocalFolderPath", local);
    if (!binder.Bind(result) || !TakeUrl("RemoteContentFolderUrl", folderUrl, folder, result) ||
        !TakeUrl("RemoteLszUrl", listUrl, list, result))
        return;
    result.resultTable.SetDefaultColumnNames({"Name", "Size", "Fault"});
    std::vector<ContentItem> items;
    DestinationFolder destination;
    if (ReadContentList(list, listUrl, items, result) &&
        OpenDestination(PathUtils::HomogeniseSlashesForOs(local), destination, result))
        Download(items, folder, destination, result).Run();
}

/// Where a file goes: its directory and its name.
bool SplitLocal(const std::string& local, std::string& folder, ContentItem& item, InvocationResult& result) {
    const std::string path = PathUtils::HomogeniseSlashesForOs(local);
    item.name = PathUtils::FileName(path);
    if (const char* const fault = ReadRemoteName(item.name).fault; *fault != '\0')
        return RefuseParameter(std::string("The file's name in 'LocalFilePath' ") + fault, result);
    folder = PathUtils::DirName(path, PathUtils::PathSep);
    if (folder.find(PathUtils::PathSep) == std::string::npos) folder += PathUtils::PathSep;  // a root
    return true;
}

void DownloadFile(const MethodParameters& parameters, InvocationResult& result) {
    std::string url, hash, local, folder, source;
    long long size = 0;
    ParameterBinder binder(parameters, false, false);
    binder.AddMandatoryBinding("RemoteContentFileUrl", url);
    binder.AddMandatoryBinding("FileHash", hash);
    binder.AddMandatoryBinding("FileSize", size);
    binder.AddMandatoryBinding("LocalFilePath", local);
    ContentItem item{};
    if (!binder.Bind(result) || !TakeUrl("RemoteContentFileUrl", url, source, result) ||
        !SplitLocal(local, folder, item, result))
        return;
    if (size < 0 || !IsSha256(hash)) {
        RefuseParameter("The expectation is no size in bytes and SHA-256", result);
        return;
    }
    item.size = size;
    item.sha256 = StringUtils::ToLowercase(hash);
    DestinationFolder destination;
    if (!OpenDestination(folder, destination, result)) return;
    Progress progress(size);
    const CopyOutcome outcome = CopyContent(item, source, destination, progress);
    if (outcome.code != 0) Fail(outcome.code, '\'' + ShownText(url) + "' " + outcome.fault, result);
}

bool CheckEnabled(InvocationResult& result) {
    return WayfarProviderWrapper::WayfarIsEnabled() ||
           Fail(InvocationResult::kSystemFailure, "Downloads are not enabled in the agent's configuration",
                result);
}

void Invoke(const std::string& method, const MethodParameters& parameters, InvocationResult& result) {
    if (method == "IsOkayForDownload") {
        const bool isOkay = WayfarProviderWrapper::WayfarIsEnabled() && !IsEnding();
        result.resultTable.AddRow(VariantList(Variant("WayfarOkay", isOkay)));
    } else if (method == "DownloadFolderContent") {
        if (CheckEnabled(result)) DownloadFolder(parameters, result);
    } else if (method == "DownloadFileContent") {
        if (CheckEnabled(result)) DownloadFile(parameters, result);
    } else {
        RefuseParameter("The provider has no method '" + ShownText(method) + '\'', result);
    }
}

}  // namespace

void ContentProvider::InvokeMethod(const std::string& method, VariantList& parameters,
                                   InvocationResult& result, void*) {
    MethodParameters call;
    call.scalars = parameters;
    Invoke(method, call, result);
    if (result.resultCode == 0) return;
    if (auto* const logger = ServiceLocator::Get<ICLogger>(true))
        logger->Error("Provider's method '%s' failed: %s", LogText::OneLine(method).c_str(),
                      LogText::OneLine(result.errorMessage).c_str());
}

}  // namespace quillon::agent
