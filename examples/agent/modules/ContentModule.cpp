#include "modules/Modules.h"

#include <cstdint>
#include <utility>

#include "content/ContentCopy.h"
#include "modules/Describe.h"
#include "quillon/DescribedBinder.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/LsZFile.h"
#include "quillon/TimePoint.h"
#include "quillon/WayfarProviderWrapper.h"

namespace quillon::agent {

namespace {

/// What a provider fetches comes from the network, as a rule.
const std::vector<IMethodMetadata::MetadataFlag> kDownloadFlags = {IMethodMetadata::IntensiveIO,
                                                                   IMethodMetadata::MayModifySystemState,
                                                                   IMethodMetadata::PerformsNetworkActivity};

constexpr std::int64_t kEpochAsFileTime = 116'444'736'000'000'000;

/// Returns false when a download may not start now; the result then says why.
bool CheckAvailable(WayfarProviderWrapper& wrapper, InvocationResult& result) {
    if (!WayfarProviderWrapper::WayfarIsEnabled())
        return Fail(InvocationResult::kSystemFailure,
                    "Downloads are not enabled in the agent's configuration", result);
    bool failed = false;
    InvocationResult answer;
    if (wrapper.WayfarIsAvailable(failed, &answer)) return true;
    if (!failed) return Fail(InvocationResult::kSystemFailure, "No download may begin now", result);
    const bool isSilent = answer.resultCode == 0;
    return isSilent ? Fail(InvocationResult::kUnusableContentAnswer,
                           "The provider does not tell whether a download may begin", result)
                    : Fail(answer.resultCode, answer.errorMessage, result);
}

void Download(DescribedBinder& binder, InvocationResult& result) {
    std::string listUrl, folderUrl, folder;
    binder.Add("listUrl", listUrl);
    binder.Add("folderUrl", folderUrl);
    binder.Add("folder", folder);
    WayfarProviderWrapper wrapper;
    if (binder.Bind(result) && CheckAvailable(wrapper, result))
        wrapper.Download(listUrl, folderUrl, folder, result);
}

void DownloadFile(DescribedBinder& binder, InvocationResult& result) {
    std::string url, path;
    ContentExpectation expectation;
    long long size = 0;
    binder.Add("url", url);
    binder.Add("path", path);
    binder.Add("size", size);
    binder.Add("hash", expectation.hash);
    WayfarProviderWrapper wrapper;
    if (!binder.Bind(result) || !CheckAvailable(wrapper, result)) return;
    expectation.size = size;
    if (!wrapper.Download(url, path, expectation)) {
        Fail(InvocationResult::kSystemFailure, "Could not download '" + url + "': the log says why", result);
        return;
    }
    result.resultTable.AddRow(VariantList(Variant("Path", path), Variant("Size", size)));
}

Variant TimeOf(std::int64_t fileTime) {
    if (fileTime <= 0) return Variant::NullVariant("Time");
    return Variant("Time", TimePoint(TimePoint::duration(fileTime - kEpochAsFileTime)));
}

void AddFileRows(const LsZFile& list, DataTable& table) {
    table.SetDefaultColumnNames({"Name", "Folder", "Length", "Time", "Crc", "From", "To", "Rdc"});
    for (const LsZFile::FileFromLsZ& entry : list.GetFiles()) {
        VariantList row;
        row.Add("Name", entry.name);
        row.Add("Folder", entry.isFolder);
        row.Add("Length", static_cast<long long>(entry.length));
        row.Add(TimeOf(entry.time));
        row.Add(Variant::StringOrNullVariant("Crc", entry.crc));
        row.Add("From", static_cast<long long>(entry.from));
        row.Add("To", static_cast<long long>(entry.to));
        row.Add("Rdc", static_cast<long long>(entry.rdc));
        table.AddRow(std::move(row));
    }
}

void AddSummaryRow(LsZFile& list, DataTable& table) {
    VariantList row;
    row.Add("Version", static_cast<long long>(list.GetVersion()));
    row.Add("BlockSize", static_cast<long long>(list.GetBlockSize()));
    row.Add(Variant::StringOrNullVariant("Hash", list.GetOverallHash()));
    row.Add("Entries", static_cast<long long>(list.GetFiles().size()));
    row.Add("ListSize", static_cast<long long>(list.GetFileSize()));
    table.AddRow(std::move(row));
}

void ReadList(DescribedBinder& binder, InvocationResult& result) {
    std::string path;
    bool summary = false;
    binder.Add("path", path);
    binder.Add("summary", summary);
    if (!binder.Bind(result)) return;
    if (!FileSystemUtils::Exists(path)) {
        FailAsMissing(InvocationResult::kBadParameter, "file '" + path + '\'', result);
        return;
    }
    LsZFile list(path, nullptr);
    if (summary) {
        AddSummaryRow(list, result.resultTable);
    } else {
        AddFileRows(list, result.resultTable);
    }
    if (!list.ParsedOk())
        Fail(InvocationResult::kUnusableContentList,
             "The list '" + path + "' is not complete, or says that it is wrong", result);
}

void DescribeDownload(IMethodMetadataBuilder& builder) {
    builder.Flags(kDownloadFlags)
        .Description("Downloads the files of a content list into a folder, by the host's provider.")
        .Note(
            "The agent's provider serves URLs of the scheme file, when the configuration enables it "
            "(wayfarEnabled). The CRC of a file in the list is its SHA-256.")
        .Note(
            "A list is refused whole when a name in it could lead out of the folder; otherwise every file "
            "that can be downloaded is.")
        .Example(
            "quillon-agent run Content.Download --config agent.json listUrl=file:///srv/tools.lst "
            "folderUrl=file:///srv/tools folder=/opt/tools");
    AddParameter(builder, "listUrl", "URL of the list.");
    AddParameter(builder, "folderUrl", "URL of the folder whose files it lists.");
    AddParameter(builder, "folder", "Where they go; it is made when it is not there.");
    AddColumn(builder, "Name", typeid(std::string), "Of the file, below the folder.");
    AddColumn(builder, "Size", typeid(long long), "Bytes, as the list says.");
    AddColumn(builder, "Fault", typeid(std::string), "Why it is not there; null when it is.");
}

void DescribeDownloadFile(IMethodMetadataBuilder& builder) {
    builder.Flags(kDownloadFlags)
        .Description("Downloads one file, by the host's provider.")
        .Example(
            "quillon-agent run Content.DownloadFile --config agent.json url=file:///srv/tools/a.bin "
            "path=/opt/a.bin size=4 hash=9f86d081884c7d659a2feaa0c55ad015a3bf4f1b2b0b822cd15d6c15b0f00a08");
    AddParameter(builder, "url", "URL of the file.");
    AddParameter(builder, "path", "Where it goes, with its name there.");
    builder.CreateParameter("size", typeid(long long))
        .Description("Bytes that it must have.")
        .BindParameter();
    AddParameter(builder, "hash", "SHA-256 that it must have, 64 hexadecimal digits.");
    AddColumn(builder, "Path", typeid(std::string), "As given.");
    AddColumn(builder, "Size", typeid(long long), "Bytes.");
}

void DescribeReadList(IMethodMetadataBuilder& builder) {
    builder.Description("Reads a content list, a row for every entry.")
        .Note("What was read is in the table even when the list is not complete.")
        .Example("quillon-agent run Content.ReadList path=/srv/tools.lst summary=true");
    AddParameter(builder, "path", "Path of the list.");
    AddFlag(builder, "summary", "One row about the list itself instead.");
    AddColumn(builder, "Name", typeid(std::string), "As the list says; empty for a folder.");
    AddColumn(builder, "Folder", typeid(bool), "Whether the entry stands for a folder.");
    AddColumn(builder, "Length", typeid(long long), "Bytes.");
    AddColumn(builder, "Time", typeid(TimePoint), "When the file was changed; null when unknown.");
    AddColumn(builder, "Crc", typeid(std::string), "Checksum; null when there is none.");
    AddColumn(builder, "From", typeid(long long), "As the list says.");
    AddColumn(builder, "To", typeid(long long), "As the list says.");
    AddColumn(builder, "Rdc", typeid(long long), "As the list says.");
    const auto addOfSummary = [&builder](const char* name, const std::type_info& type, const char* text) {
        builder.CreateColumn(name, type, true).Description(text).Note("With summary=true only.").BindColumn();
    };
    addOfSummary("Version", typeid(long long), "Of the package.");
    addOfSummary("BlockSize", typeid(long long), "As the list says, 0 when it does not.");
    addOfSummary("Hash", typeid(std::string), "Of the whole package; null when there is none.");
    addOfSummary("Entries", typeid(long long), "How many the list has.");
    addOfSummary("ListSize", typeid(long long), "Bytes of the list.");
}

}  // namespace

std::unique_ptr<IModule> MakeContentModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Content.Download", IMethodMetadata::V5_0, &DescribeDownload, &Download));
    methods.push_back(
        MakeMethod("Content.DownloadFile", IMethodMetadata::V5_0, &DescribeDownloadFile, &DownloadFile));
    methods.push_back(MakeMethod("Content.ReadList", IMethodMetadata::V5_0, &DescribeReadList, &ReadList));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
