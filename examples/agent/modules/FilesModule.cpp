#include "modules/Modules.h"

#include <chrono>
#include <functional>
#include <utility>

#include "common/Failure.h"
#include "modules/Describe.h"
#include "quillon/DescribedBinder.h"
#include "quillon/ErrorHelper.h"
#include "quillon/File.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/PathUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/TimePoint.h"

namespace quillon::agent {

namespace {

constexpr long long kDefaultMaxSize = 64 * 1024 * 1024;
using Encoding = FileSystemUtils::FileEncoding;

/// With its variables expanded; in the working directory, or a drive's, when it names none.
std::string ReadPattern(const std::string& text) {
    const std::wstring expanded =
        StringUtils::ExpandEnvironmentVariables(StringUtils::NarrowStringToWide(text));
    const std::string pattern = PathUtils::HomogeniseSlashesForOs(StringUtils::WideStringToNarrow(expanded));
    if (pattern.find(PathUtils::PathSep) != std::string::npos) return pattern;
    const std::size_t name = pattern.rfind(':') + 1;  // 0 when there is none
    return pattern.substr(0, name) + ".\\" + pattern.substr(name);
}

/// That nothing matches is no failure, nor that there is no such directory.
void ReportFailedSearch(const std::string& pattern, InvocationResult& result) {
    const std::string reason = LastFailure({kFileNotFound, kPathNotFound, kNoDirectory});
    if (!reason.empty())
        Fail(InvocationResult::kSystemFailure, "Cannot list '" + pattern + "': " + reason, result);
}

/// A row for every file that matches the parameter "path"; none is no failure.
void ListFiles(DescribedBinder& binder, const std::vector<std::string>& columns,
               const std::function<VariantList(const std::string& file)>& rowOf, InvocationResult& result) {
    std::string pattern;
    binder.Add("path", pattern);
    if (!binder.Bind(result) || !HasNoZeroByte("path", pattern, result)) return;
    std::vector<std::string> files;
    FileSystemUtils::FindFiles(ReadPattern(pattern), &files);
    ReportFailedSearch(pattern, result);
    result.resultTable.SetDefaultColumnNames(columns);
    for (const std::string& file : files) result.resultTable.AddRow(rowOf(file));
}

VariantList VersionRow(const std::string& file) {
    const auto versions = FileSystemUtils::GetVersionInformation(file, "");
    VariantList row(Variant("File", file));
    row.Add(Variant::StringOrNullVariant("FileVersion", versions.fileVersion));
    row.Add(Variant::StringOrNullVariant("ProductVersion", versions.productVersion));
    row.Add(Variant::StringOrNullVariant("Description", versions.fileDescription));
    row.Add(Variant::StringOrNullVariant("Product", versions.productName));
    row.Add(Variant::StringOrNullVariant("OriginalName", versions.originalFilename));
    return row;
}

void Versions(DescribedBinder& binder, InvocationResult& result) {
    ListFiles(binder, {"File", "FileVersion", "ProductVersion", "Description", "Product", "OriginalName"},
              &VersionRow, result);
}

Variant SizeOf(const std::string& file) {
    const auto size = static_cast<long long>(FileSystemUtils::GetFileSizeInBytes(file));
    return size > 0 || ErrorHelper::GetLastErrorCode() == 0 ? Variant("Size", size)
                                                            : Variant::NullVariant("Size");
}

VariantList FoundRow(const std::string& file) {
    bool isDirectory = false;
    long long seconds = 0;
    const bool exists = FileSystemUtils::Exists(file, isDirectory, &seconds);
    const TimePoint modified{std::chrono::seconds(seconds)};
    return VariantList(Variant("File", file), SizeOf(file),
                       exists ? Variant("Modified", modified) : Variant::NullVariant("Modified"));
}

void Find(DescribedBinder& binder, InvocationResult& result) {
    ListFiles(binder, {"File", "Size", "Modified"}, &FoundRow, result);
}

VariantList EncodingRow(const std::string& file) {
    const Encoding encoding = File::Open(file).GetEncoding();
    const std::string name = FileSystemUtils::FileEncodingToString(encoding);
    return VariantList(
        Variant("File", file),
        Variant::StringOrNullVariant("Encoding", encoding == FileSystemUtils::NOTSET ? "" : name));
}

void DetectEncoding(DescribedBinder& binder, InvocationResult& result) {
    ListFiles(binder, {"File", "Encoding"}, &EncodingRow, result);
}

/// NOTSET for the empty name. False when there is none of this name.
bool FindEncoding(const std::string& name, Encoding& encoding) {
    encoding = FileSystemUtils::NOTSET;
    if (name.empty()) return true;
    for (int i = FileSystemUtils::ANSI; i <= FileSystemUtils::UTF16BE; ++i) {
        encoding = static_cast<Encoding>(i);
        if (StringUtils::CompareCaseInsensitive(name, FileSystemUtils::FileEncodingToString(encoding)))
            return true;
    }
    return false;
}

struct ReadCall {
    std::string path, encodingName;
    bool lines = false;
    long long maxSize = 0;
    Encoding encoding = FileSystemUtils::NOTSET;
};

bool Check(ReadCall& call, InvocationResult& result) {
    bool isDirectory = false;
    if (!FindEncoding(call.encodingName, call.encoding))
        return RefuseParameter("'encoding' parameter is the name of no encoding", result);
    if (call.maxSize < 0) return RefuseParameter("'maxSize' parameter cannot be negative", result);
    const std::string what = "file '" + call.path + '\'';
    if (!FileSystemUtils::Exists(call.path, isDirectory, nullptr))
        return FailAsMissing(InvocationResult::kSystemFailure, what, result);
    if (isDirectory) return Fail(InvocationResult::kSystemFailure, "There is no " + what, result);
    if (FileSystemUtils::GetFileSizeInBytes(call.path) > static_cast<unsigned long long>(call.maxSize))
        return Fail(InvocationResult::kSystemFailure,
                    "The file has more than " + std::to_string(call.maxSize) + " bytes", result);
    return true;
}

void AddText(const ReadCall& call, const std::string& text, Encoding detected, DataTable& table) {
    const std::string name = FileSystemUtils::FileEncodingToString(detected);
    if (!call.lines) {
        table.AddRow(VariantList(Variant("Encoding", name), Variant("Text", text)));
        return;
    }
    std::vector<std::string> lines;
    StringUtils::SplitByChar(text, '\n', lines);
    if (lines.back().empty()) lines.pop_back();  // the text ended with a line end
    table.SetDefaultColumnNames({"Encoding", "Text", "LineNumber"});
    long long number = 0;
    for (std::string& line : lines) {
        StringUtils::TrimTrailing(line, '\r');
        table.AddRow(VariantList(Variant("Encoding", name), Variant("Text", std::move(line)),
                                 Variant("LineNumber", number++)));
    }
}

void ReadText(DescribedBinder& binder, InvocationResult& result) {
    ReadCall call;
    binder.Add("path", call.path);
    binder.Add("encoding", call.encodingName);
    binder.Add("lines", call.lines);
    binder.Add("maxSize", call.maxSize);
    if (!binder.Bind(result) || !Check(call, result)) return;
    Encoding detected = FileSystemUtils::NOTSET;
    std::string text;
    const auto most = static_cast<std::uint64_t>(call.maxSize);
    if (!FileSystemUtils::ReadFileLimited(call.path, most, text, detected, call.encoding)) {
        const std::string reason = StringUtils::GetLastErrorAsString();
        Fail(InvocationResult::kSystemFailure,
             "Cannot read file '" + call.path + "' within " + std::to_string(most) + " bytes: " + reason,
             result);
        return;
    }
    AddText(call, text, detected, result.resultTable);
}

void DescribePattern(IMethodMetadataBuilder& builder) {
    AddParameter(builder, "path", "Path with wildcards in its last part; %NAME% stands for a variable.");
    AddColumn(builder, "File", typeid(std::string), "Path of the file.");
}

void DescribeVersions(IMethodMetadataBuilder& builder) {
    builder.Description("Lists the versions that files carry, a row a file.")
        .Note("What a file does not say is null.")
        .Example("quillon-agent run Files.Versions path=\"%SystemRoot%\\System32\\*.dll\"");
    DescribePattern(builder);
    AddColumn(builder, "FileVersion", typeid(std::string), "Four numbers.");
    AddColumn(builder, "ProductVersion", typeid(std::string), "Four numbers.");
    AddColumn(builder, "Description", typeid(std::string), "What the file is.");
    AddColumn(builder, "Product", typeid(std::string), "Name of the product.");
    AddColumn(builder, "OriginalName", typeid(std::string), "The file's name when it was made.");
}

void DescribeFind(IMethodMetadataBuilder& builder) {
    builder.Description("Finds files, a row each.").Example("quillon-agent run Files.Find path=/etc/*.conf");
    DescribePattern(builder);
    AddColumn(builder, "Size", typeid(long long), "Bytes; null when they cannot be told.");
    AddColumn(builder, "Modified", typeid(TimePoint), "Whole seconds; null when that cannot be told.");
}

void DescribeEncoding(IMethodMetadataBuilder& builder) {
    builder.Description("Tells the encodings of text files, a row a file.")
        .Example("quillon-agent run Files.Encoding path=C:\\Logs\\*.log");
    DescribePattern(builder);
    AddColumn(builder, "Encoding", typeid(std::string),
              "ANSI, UTF8, UTF8NOBOM, UTF16LE, UTF16LENOBOM or UTF16BE; null when the file cannot be read.");
}

void DescribeRead(IMethodMetadataBuilder& builder) {
    builder.Description("Reads a text file of any encoding.")
        .Example("quillon-agent run Files.Read path=C:\\Logs\\setup.log lines=true");
    AddParameter(builder, "path", "Path of the file.");
    AddOptionalParameter(builder, "encoding",
                         "How to read it, by a name that Files.Encoding tells; by default as detected.");
    AddFlag(builder, "lines", "A row for every line.");
    builder.CreateParameter("maxSize", typeid(long long))
        .Description("Bytes; a larger file is not read.")
        .OptionalValue(kDefaultMaxSize)
        .BindParameter();
    AddColumn(builder, "Encoding", typeid(std::string), "As detected.");
    AddColumn(builder, "Text", typeid(std::string), "In UTF-8; bytes of an ANSI file as they are.");
    builder.CreateColumn("LineNumber", typeid(long long), false)
        .Description("From 0.")
        .Note("With lines=true only.")
        .BindColumn();
}

}  // namespace

std::unique_ptr<IModule> MakeFilesModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Files.Find", IMethodMetadata::V5_0, &DescribeFind, &Find));
    methods.push_back(
        MakeMethod("Files.Encoding", IMethodMetadata::V5_0, &DescribeEncoding, &DetectEncoding));
    methods.push_back(MakeMethod("Files.Read", IMethodMetadata::V5_0, &DescribeRead, &ReadText));
    methods.push_back(MakeMethod("Files.Versions", IMethodMetadata::V5_0, &DescribeVersions, &Versions));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
