#pragma once

#include <string>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

/// Lists of sequence numbers as comma-separated decimals. Zero is no sequence
/// number and is left out both ways.
class QUILLON_API SequenceNumberUtils {
public:
    SequenceNumberUtils() = delete;

    static std::string SequenceNumberListToCsv(std::vector<unsigned long long>& list);
    /// Appends to `list`. Each piece is read as strtoull does: leading white space and
    /// a sign are taken, reading stops at the first character that is no digit.
    static void SequenceNumberCsvToList(const std::string& text, std::vector<unsigned long long>& list);
};

}  // namespace quillon
