#include "providers/CommandOutput.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/CodePageApi.h"
#include "platform/ErrorText.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ProcessUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RowBuilder.h"

namespace quillon {

namespace {

std::string_view WithoutLineEnd(std::string_view line) {
    const auto last = line.find_last_not_of("\n\f\r");
    return line.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

/// Removes a character whose end was cut off.
void TrimCutCharacter(std::string& text) {
    constexpr std::size_t kLongestCut = 3;
    const std::size_t invalid = base::FindInvalidUtf8(text);
    if (invalid != std::string::npos && text.size() - invalid <= kLongestCut) text.resize(invalid);
}

bool HasByteOrderMark(std::string_view bytes) {
    return bytes.starts_with("\xEF\xBB\xBF") || bytes.starts_with("\xFF\xFE") ||
           bytes.starts_with("\xFE\xFF");
}

void AddLineRows(std::string_view text, int exitCode, DataTable& table) {
    detail::RowBuilder row(
        {ProcessUtils::ExitCodeColName, ProcessUtils::OutputColName, ProcessUtils::LineNumberColName}, table);
    for (long long number = 0; !text.empty(); ++number) {
        const auto end = std::min(text.find('\n'), text.size() - 1) + 1;
        row.AddInteger(0, exitCode);
        row.AddText(1, WithoutLineEnd(text.substr(0, end)));
        row.AddInteger(2, number);
        row.EndRow();
        text.remove_prefix(end);
    }
}

}  // namespace

void CommandOutput::TakePiece() {
    const std::optional<std::string_view> piece = m_capture.Read();
    if (piece) return Keep(*piece);
    m_fault = platform::LastError();
    m_capture.Refuse();  // whoever still writes must not wait for ever
}

void CommandOutput::TakeRest() {
    const std::uint64_t last = m_total + m_capture.Available();
    // On Windows a piece is empty where the command wrote nothing.
    while (m_total < last && m_capture.Available() > 0) TakePiece();
    // A piece may hold what was written after the end.
    if (m_total <= last) return;
    if (m_fault == 0) m_bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(last, m_bytes.size())));
    m_total = last;
}

void CommandOutput::Keep(std::string_view piece) {
    m_total += piece.size();
    if (m_fault != 0) return;
    try {
        if (IsPastLimit()) piece = piece.substr(0, static_cast<std::size_t>(m_limit - m_bytes.size()));
        m_bytes.append(piece);
    } catch (const std::exception&) {  // no memory, or no string is as long
        m_fault = base::kNotEnoughMemory;
    }
}

std::string CommandOutput::Decode(std::uint32_t& codePage) {
    auto encoding = FileSystemUtils::NOTSET;
    if (codePage != 0 && !HasByteOrderMark(m_bytes)) {
        if (auto text = platform::CodePageToUtf8(m_bytes, codePage)) return *std::move(text);
        codePage = 0;
    }
    return FileSystemUtils::DecodeContent(std::move(m_bytes), encoding);
}

std::string CommandOutput::TakeText(std::uint32_t& codePage) {
    std::string text = Decode(codePage);
    m_bytes = std::string();
    if (IsPastLimit()) TrimCutCharacter(text);
    StringUtils::RightTrim(text);
    return text;
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
