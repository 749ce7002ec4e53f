#include "files/LsZParser.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "base/AsciiRun.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/KeptError.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

using View = std::string_view;

static_assert(std::endian::native == std::endian::little, "lists are little-endian");

/// Returns the text in valid UTF-8 for the log; invalid bytes are replaced.
std::string ForLog(View text) { return LogText::OneLine(base::RepairUtf8(text)); }

/// Returns the text after a beginning; nothing unless the line starts with it and goes on after it.
std::optional<View> After(View line, View beginning) {
    if (!line.starts_with(beginning) || line.size() == beginning.size()) return std::nullopt;
    return line.substr(beginning.size());
}

std::optional<LsZNumber> NumberAfter(View line, View beginning, unsigned base = 10) {
    const auto rest = After(line, beginning);
    const LsZNumber number = rest ? LsZNumber::Read(*rest, base) : LsZNumber();
    return number.isThere ? std::optional(number) : std::nullopt;
}

/// Returns the offset that lies `count` UTF-16 units after another one; inside a character when that is
/// half a pair. What stands for an invalid unit is one.
std::size_t SkipUnits(View text, std::size_t at, std::size_t count) {
    for (; count > 0 && at < text.size(); --count) {
        const auto lead = static_cast<unsigned char>(text[at]);
        if (lead < 0xC0 || lead > 0xF4) {
            ++at;
        } else if (lead < 0xF0) {
            at += lead < 0xE0 ? 2 : 3;
        } else {
            at += count > 1 ? 4 : 1;
            if (count > 1) --count;
        }
    }
    return at;
}

/// The number at an offset of the text, 0 when the offset is none or past its end.
LsZNumber NumberAt(View text, std::size_t at, unsigned base) {
    return at <= text.size() ? LsZNumber::Read(text.substr(at), base) : LsZNumber();
}

}  // namespace

LsZFile::Parser::Parser(LsZFile& file) : m_file(file), m_record(*file.m_record), m_reader(m_record.path) {}

void LsZFile::Parser::Log(void (ICLogger::*write)(const char*, std::va_list), const char* format, ...) const {
    if (m_file.m_logger == nullptr) return;
    std::va_list arguments;
    va_start(arguments, format);
    (m_file.m_logger->*write)(format, arguments);
    va_end(arguments);
}

bool LsZFile::Parser::Parse() {
    if (!OpenLsZFile()) return false;
    ReadLines();
    const bool isOk = Decide();
    platform::SetLastErrorCode(isOk ? 0 : m_readError != 0 ? m_readError : base::kInvalidData);
    return isOk;
}

bool LsZFile::Parser::OpenLsZFile() {
    if (!m_reader.IsOpen()) {
        const platform::KeptError error;
        const std::string reason = StringUtils::GetErrorAsString(static_cast<std::int32_t>(error.Code()));
        Log(&ICLogger::ErrorV, "Cannot open LSZ file '%s' because: %s",
            LogText::OneLine(m_record.path).c_str(), reason.c_str());
        return false;
    }
    m_file.m_isUnicode = m_reader.IsUnicode();
    if (m_file.m_isUnicode) return true;
    Log(&ICLogger::WarnV, "LSZ file '%s' is not Unicode", LogText::OneLine(m_record.path).c_str());
    return true;
}

void LsZFile::Parser::ReadLines() {
    unsigned count = 0;
    for (; GetNextListLine(); ++count) {
        if (m_line.front() == ';') {
            if (!ParseHash(m_line)) ParseOtherCommentLine(m_line);
            continue;
        }
        FileFromLsZ entry;
        if (SplitListLine(m_line, entry)) AddEntry(std::move(entry));
    }
    Log(&ICLogger::DebugV, "Read %u lines from LSZ file", count);
}

/// Grows to what the whole list will need when its lines go on as they are, as a vector that only doubles
/// holds every entry twice while it moves them. Eight times is the most: the first lines may be untypical.
void LsZFile::Parser::AddEntry(FileFromLsZ entry) {
    auto& files = m_record.files;
    constexpr std::size_t kFirst = 256;
    if (files.size() == files.capacity()) {
        const auto size = static_cast<double>(files.size());
        const double expected = size / m_reader.ShareRead() * 1.05;
        files.reserve(
            std::max(kFirst, static_cast<std::size_t>(std::clamp(expected, size * 1.25, size * 8))));
    }
    files.push_back(std::move(entry));
}

bool LsZFile::Parser::GetNextListLine() {
    const std::string_view bytes = m_reader.Next();
    if (m_reader.HasFailed() && m_readError == 0) m_readError = platform::LastError();
    if (m_file.m_isUnicode) {
        ReadLszUnicodeLine(bytes);
    } else {
        ReadNarrowLine(bytes);
    }
    m_line = m_line.substr(0, m_line.find_last_not_of("\n\r\f") + 1);
    return !m_line.empty();
}

void LsZFile::Parser::ReadLszUnicodeLine(std::string_view bytes) {
    m_units.resize(bytes.size() / 2);
    if (!bytes.empty()) std::memcpy(m_units.data(), bytes.data(), bytes.size());
    m_narrow.resize(m_units.size());
    m_hasInvalid = false;
    if (base::NarrowAscii(m_units.data(), m_units.size(), m_narrow.data()) != m_units.size()) NarrowUnits();
    m_line = m_narrow;
    if (m_reader.HasFailed()) Log(&ICLogger::ErrorV, "%s", "Could not read from Unicode LsZ file");
}

void LsZFile::Parser::NarrowUnits() {
    auto narrow = base::Utf16ToUtf8(m_units);
    m_hasInvalid = !narrow;
    if (narrow) {
        m_narrow = std::move(*narrow);
        return;
    }
    m_narrow.clear();
    const std::u16string_view units = m_units;
    for (std::size_t at = 0, length = 1; at < units.size(); at += length) {
        auto character = base::Utf16ToUtf8(units.substr(at, 1));
        const bool isAlone = character.has_value();
        if (!isAlone) character = base::Utf16ToUtf8(units.substr(at, 2));
        length = isAlone || !character ? 1 : 2;
        m_narrow += character.value_or(std::string(1, kInvalid));
    }
}

void LsZFile::Parser::ReadNarrowLine(std::string_view bytes) {
    m_line = bytes;
    if (base::FindInvalidUtf8(bytes) == std::string_view::npos) return;
    m_line = {};
    StringUtils::NarrowStringToWide(std::string(bytes));  // which logs it
}

std::string LsZFile::Parser::ToNarrow(View text) const {
    if (!m_hasInvalid || text.find(kInvalid) == View::npos) return std::string(text);
    constexpr wchar_t kLoneSurrogate = 0xD800;
    return StringUtils::WideStringToNarrow(std::wstring(1, kLoneSurrogate));  // which logs it
}

bool LsZFile::Parser::ParseHash(View line) {
    auto hash = After(line, "; Hash ");
    if (!hash) hash = After(line, "; HashV4 ");
    if (hash) m_record.overallHash = ToNarrow(*hash);
    return hash.has_value();
}

void LsZFile::Parser::ParseOtherCommentLine(View line) {
    if (const auto version = NumberAfter(line, "; List Complete - ")) {
        SetVersion(*version);
        m_isComplete = true;
    } else if (const auto packageVersion = NumberAfter(line, "; Package Version = ")) {
        SetVersion(*packageVersion);
    } else if (line == "; List Complete") {
        m_isComplete = true;
    } else if (const auto blockSize = NumberAfter(line, "; BlockSize=", 16)) {
        m_file.m_blockSize = blockSize->As<std::uint32_t>();
    } else if (line.starts_with("; Wrong")) {
        ParseWrongLine(line);
    } else if (const auto currentVersion = NumberAfter(line, "; Current Version ")) {
        ParseCurrentVersion(*currentVersion);
    } else if (line == "; Error: Package hash does not match") {
        Log(&ICLogger::DebugV, "LSZ comment: %s", ForLog(line).c_str());
        m_hasHashError = m_isWrongVersion = true;
    }
}

void LsZFile::Parser::ParseWrongLine(View line) {
    Log(&ICLogger::InfoV, "LsZcomment: %s", ForLog(line).c_str());
    (line == "; Wrong Package Version" ? m_isWrongVersion : m_hasOtherError) = true;
}

void LsZFile::Parser::ParseCurrentVersion(const LsZNumber& number) {
    SetVersion(number);
    Log(&ICLogger::DebugV, "Current Version from \".Lst\" (%u)", unsigned{m_file.m_version});
    m_isWrongVersion = true;
}

void LsZFile::Parser::SetVersion(const LsZNumber& number) {
    m_file.m_version = static_cast<std::uint16_t>(number.As<std::uint32_t>());
}

bool LsZFile::Parser::SplitListLine(View line, FileFromLsZ& entry) const {
    const std::size_t quote = line.find('"');
    if (line.empty() || line.front() == ';' || quote == View::npos) return false;
    entry.leadingValue = LsZNumber::Read(line, 10).As<std::uint32_t>();
    View name = line.substr(quote + 1);
    const std::size_t end = name.find('"');
    const View text = end == View::npos ? View() : name.substr(end + 1);
    name = name.substr(0, end);
    const bool isFolder = end != View::npos && name.ends_with("\\.");
    if (name.starts_with(".\\")) {
        name.remove_prefix(2);
        entry.leadingValue = 1;
    }
    entry.name = ToNarrow(name);
    const LsZFields fields = LsZFields::Find(text);
    if (fields.length == LsZFields::kNone) {
        entry.name.clear();
        entry.isFolder = isFolder;
        return isFolder;
    }
    SplitFields(text, fields, entry);
    return true;
}

void LsZFile::Parser::SplitFields(View text, const LsZFields& fields, FileFromLsZ& entry) const {
    constexpr std::size_t kHexPrefix = 2;  // skipped, whatever it is
    const auto hexAfterPrefix = [text](std::size_t at) {
        return at == LsZFields::kNone ? LsZNumber() : NumberAt(text, SkipUnits(text, at, kHexPrefix), 16);
    };
    const bool isHex = fields.hexLength != LsZFields::kNone;
    entry.length =
        NumberAt(text, isHex ? fields.hexLength : fields.length, isHex ? 16 : 10).As<std::int64_t>();
    entry.time = NumberAt(text, fields.time, 16).As<std::int64_t>();
    if (fields.time == LsZFields::kNone) {
        Log(&ICLogger::WarnV, "No dt= (time) part for '%s'", LogText::OneLine(entry.name).c_str());
    }
    entry.from = hexAfterPrefix(fields.from).As<std::int64_t>();
    entry.to = hexAfterPrefix(fields.to).As<std::int64_t>();
    entry.rdc = NumberAt(text, fields.rdc, 10).As<std::int32_t>();
    if (fields.crc != LsZFields::kNone) SplitChecksum(text.substr(fields.crc), entry);
}

void LsZFile::Parser::SplitChecksum(View text, FileFromLsZ& entry) const {
    const std::size_t end = text.find(' ');
    entry.crc = ToNarrow(text.substr(0, end));
    if (end == View::npos || end + 1 == text.size()) return;
    const std::string extra = ForLog(text.substr(end + 1));
    Log(&ICLogger::InfoV, "Extra \"%s\" %s", LogText::OneLine(entry.name).c_str(),
        LogText::OneLine(extra).c_str());
    constexpr unsigned long long kNotFound = ~0ULL;
    if (StringUtils::FindCaseInsensitive(extra, "(DodgyDates)") != kNotFound) entry.time = 0;
}

bool LsZFile::Parser::Decide() const {
    if (!m_isComplete) {
        const std::string& name = m_record.displayName.empty() ? m_record.path : m_record.displayName;
        Log(&ICLogger::ErrorV, "LSZ file '%s' is not complete", LogText::OneLine(name).c_str());
        return false;
    }
    if (m_isWrongVersion) {
        Log(&ICLogger::InfoV, "Current wrong version %s %u - but list is complete?",
            LogText::OneLine(m_record.path).c_str(), unsigned{m_file.m_version});
    }
    return !m_isWrongVersion && !m_hasOtherError && !m_hasHashError;
}

}  // namespace quillon
