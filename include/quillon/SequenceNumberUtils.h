#pragma once

#include <string>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

/// Converts lists of sequence numbers to comma-separated decimals and back. Zero is no sequence
/// number and is left out both ways. Every operation is thread-safe; nothing is logged or
/// thrown.
///
/// @code
/// std::vector<unsigned long long> numbers;
/// SequenceNumberUtils::SequenceNumberCsvToList("5,,0,7", numbers);             // 5 and 7
/// std::cout << SequenceNumberUtils::SequenceNumberListToCsv(numbers) << '\n';  // 5,7
/// @endcode
class QUILLON_API SequenceNumberUtils {
public:
    SequenceNumberUtils() = delete;

    /// Returns the numbers in list order, without blanks; the empty text when there are none.
    /// The list is not changed.
    static std::string SequenceNumberListToCsv(std::vector<unsigned long long>& list);
    /// Appends the numbers to `list`, which is not cleared. Each piece is read as strtoull()
    /// does: leading white space and a sign are accepted ("-1" gives 18446744073709551615),
    /// reading stops at the first character that is no digit, and a number past the range
    /// becomes the largest.
    static void SequenceNumberCsvToList(const std::string& text, std::vector<unsigned long long>& list);
};

}  // namespace quillon
