#include "cli/Output.h"

#include <cerrno>
#include <system_error>

#include "quillon/DataTableIO.h"
#include "system/Console.h"

namespace quillon::agent {

namespace {

std::string RenderAs(const DataTable& table, Format format) {
    if (format == Format::Json) return ToJson(table);
    if (format == Format::Csv) return ToCsv(table);
    return ToText(table);
}

[[noreturn]] void ThrowErrno(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

std::string Render(const DataTable& table, Format format) {
    if (table.IsUndefined()) return {};
    std::string text = RenderAs(table, format);
    if (!text.ends_with('\n')) text += '\n';
    return text;
}

Output::Output() : m_stream(TakeStandardOutput()) {
    if (m_stream == nullptr) ThrowErrno("Cannot use standard output");
}

void Output::Write(const std::string& text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), m_stream.get()) == text.size();
    if (!isWritten || std::fflush(m_stream.get()) != 0) ThrowErrno("Cannot write the result");
}

}  // namespace quillon::agent
