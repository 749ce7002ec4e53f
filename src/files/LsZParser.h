#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "files/LsZFields.h"
#include "files/LsZLineReader.h"
#include "quillon/ICLogger.h"
#include "quillon/LsZFile.h"

namespace quillon {

struct LsZFile::Record {
    std::string path;
    std::string displayName;
    std::string overallHash;
    std::vector<FileFromLsZ> files;
};

/// Fills an LsZFile from its list.
class LsZFile::Parser {
public:
    explicit Parser(LsZFile& file);

    /// Whether the list is complete and nothing in it says that it is wrong.
    bool Parse();

private:
    using View = std::string_view;

    static constexpr char kInvalid = '\xFF';  // which UTF-8 never has

    bool OpenLsZFile();
    void ReadLines();
    void AddEntry(FileFromLsZ entry);
    bool GetNextListLine();
    void ReadLszUnicodeLine(std::string_view bytes);
    void NarrowUnits();
    void ReadNarrowLine(std::string_view bytes);
    bool ParseHash(View line);
    void ParseOtherCommentLine(View line);
    void ParseWrongLine(View line);
    void ParseCurrentVersion(const LsZNumber& number);
    void SetVersion(const LsZNumber& number);
    /// Converts a text to UTF-8; empty, with an Error entry, when it is invalid.
    std::string ToNarrow(View text) const;
    bool SplitListLine(View line, FileFromLsZ& entry) const;
    void SplitFields(View text, const LsZFields& fields, FileFromLsZ& entry) const;
    void SplitChecksum(View text, FileFromLsZ& entry) const;
    bool Decide() const;
    /// Writes nothing without a logger.
    void Log(void (ICLogger::*write)(const char*, std::va_list), const char* format, ...) const
        QUILLON_PRINTF(3, 4);

    LsZFile& m_file;
    Record& m_record;
    LsZLineReader m_reader;
    std::u16string m_units;
    std::string m_narrow;
    /// UTF-8, with kInvalid for each unit that is none of UTF-16. In m_narrow or the reader's buffer.
    std::string_view m_line;
    bool m_hasInvalid = false;
    std::uint32_t m_readError = 0;
    bool m_isComplete = false;
    bool m_isWrongVersion = false;
    bool m_hasHashError = false;
    bool m_hasOtherError = false;
};

}  // namespace quillon
