#include "providers/CommandOutput.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/FileApi.h"
#include "platform/ProcessApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ProcessUtils.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

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
    try {
        Erase();
    } catch (...) {
        // A logger of the host may throw.
    }
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
    m_size = limit > 0 ? std::min(Size(), limit) : Size();
    m_file.Reset();
    return m_size;
}

std::string CommandOutput::Read() const {
    if (m_size == 0) return {};
    // A descendant of the command may still be writing: only the bytes that were there at the end count.
    std::optional<std::string> content = platform::ReadWholeFile(m_path, m_size);
    if (!content) return {};
    auto encoding = FileSystemUtils::NOTSET;
    std::string text = FileSystemUtils::DecodeContent(*std::move(content), encoding);
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
