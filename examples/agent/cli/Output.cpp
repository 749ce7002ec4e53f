#include "cli/Output.h"

#include <cerrno>
#include <ostream>
#include <streambuf>
#include <system_error>

#include "cli/OpenMetrics.h"
#include "cli/TableText.h"
#include "quillon/DataTableIO.h"
#include "system/Console.h"

namespace quillon::agent {

namespace {

/// Lets a stream write to a file of the C library, which buffers.
class FileBuffer : public std::streambuf {
public:
    explicit FileBuffer(std::FILE* file) : m_file(file) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        return static_cast<std::streamsize>(std::fwrite(text, 1, static_cast<std::size_t>(size), m_file));
    }
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
        return std::fputc(character, m_file);
    }

private:
    std::FILE* m_file;
};

void WriteAs(std::ostream& stream, const DataTable& table, Format format, std::size_t width,
             const std::string& method) {
    switch (format) {
        case Format::JsonLines:
            WriteJsonLines(stream, table);
            break;
        case Format::Line:
            WriteLines(stream, table);
            break;
        case Format::Markdown:
            WriteMarkdown(stream, table);
            break;
        case Format::OpenMetrics:
            WriteOpenMetrics(stream, table, method);
            break;
        case Format::Json:
            WriteJson(stream, table);
            stream << '\n';
            break;
        case Format::Csv:
            WriteCsv(stream, table);
            break;
        case Format::Text:
            WriteText(stream, table, {.maxWidth = width});
            break;
    }
}

[[noreturn]] void ThrowErrno(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Output::Output() : m_stream(TakeStandardOutput()) {
    if (m_stream == nullptr) ThrowErrno("Cannot use standard output");
}

void Output::Write(std::string_view text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), m_stream.get()) == text.size();
    if (!isWritten || std::fflush(m_stream.get()) != 0) ThrowErrno("Cannot write the result");
}

std::size_t Output::Width() const { return TerminalWidth(m_stream.get()); }

void Output::Write(const DataTable& table, Format format, const std::string& method) {
    if (table.IsUndefined() && format != Format::OpenMetrics) return;
    FileBuffer buffer(m_stream.get());
    std::ostream stream(&buffer);
    WriteAs(stream, table, format, Width(), method);
    if (!stream || std::fflush(m_stream.get()) != 0) ThrowErrno("Cannot write the result");
}

}  // namespace quillon::agent
