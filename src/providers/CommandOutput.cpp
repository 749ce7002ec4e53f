#include "providers/CommandOutput.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "platform/ProcessApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ProcessUtils.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using std::chrono::milliseconds;

constexpr std::uint32_t kSharingViolation = 32;
constexpr milliseconds kUnlockLimit{1000};
constexpr milliseconds kUnlockInterval{5};

void AwaitUnlocked(const std::string& path) {
    const auto deadline = std::chrono::steady_clock::now() + kUnlockLimit;
    while (!platform::SizeOfFile(path) && platform::LastError() == kSharingViolation &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(kUnlockInterval);
    }
}

std::string_view WithoutLineEnd(std::string_view line) {
    const auto last = line.find_last_not_of("\n\f\r");
    return line.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

void AddLineRows(std::string_view text, int exitCode, DataTable& table) {
    const std::string exitCodeName = ProcessUtils::ExitCodeColName;
    const std::string outputName = ProcessUtils::OutputColName;
    const std::string lineNumberName = ProcessUtils::LineNumberColName;
    for (long long number = 0; !text.empty(); ++number) {
        const auto end = std::min(text.find('\n'), text.size() - 1) + 1;
        VariantList row;
        row.Reserve(3);
        row.Add(exitCodeName, exitCode);
        row.Add(outputName, std::string(WithoutLineEnd(text.substr(0, end))));
        row.Add(lineNumberName, number);
        table.AddRow(std::move(row));
        text.remove_prefix(end);
    }
}

}  // namespace

CommandOutput::~CommandOutput() {
    m_file.Reset();
    Erase();
}

bool CommandOutput::Open() {
    m_path = FileSystemUtils::GetTemporaryFile();
    if (!m_path.empty()) m_file = platform::OpenForCapture(m_path);
    return static_cast<bool>(m_file);
}

std::uint64_t CommandOutput::Size() const { return platform::SizeOfOpenFile(m_file).value_or(0); }

std::uint64_t CommandOutput::Close(std::uint64_t limit) {
    if (!m_file) return 0;
    if (limit > 0) platform::CutOpenFile(m_file, limit);
    const std::uint64_t size = Size();
    m_file.Reset();
    return size;
}

std::string CommandOutput::Read() const {
    if (m_path.empty()) return {};
    AwaitUnlocked(m_path);
    auto encoding = FileSystemUtils::NOTSET;
    std::string text = FileSystemUtils::ReadFile(m_path, encoding, FileSystemUtils::NOTSET);
    StringUtils::RightTrim(text);
    return text;
}

void CommandOutput::Erase() {
    if (!m_path.empty()) FileSystemUtils::EraseFile(std::exchange(m_path, {}), false);
}

void AddOutputRows(std::string text, int exitCode, bool asLines, DataTable& table) {
    if (asLines) return AddLineRows(text, exitCode, table);
    VariantList row;
    row.Add(ProcessUtils::ExitCodeColName, exitCode);
    row.Add(ProcessUtils::OutputColName, std::move(text));
    table.AddRow(std::move(row));
}

void SetOutputColumns(bool asLines, DataTable& table) {
    VariantList columns(Variant(ProcessUtils::ExitCodeColName, 0), Variant(ProcessUtils::OutputColName, ""));
    if (asLines) columns.Add(ProcessUtils::LineNumberColName, 0);
    table.SetDefaultColumns(columns);
}

}  // namespace quillon
