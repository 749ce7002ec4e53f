#include "quillon/SequenceNumberUtils.h"

#include <algorithm>
#include <cstdlib>

namespace quillon {

std::string SequenceNumberUtils::SequenceNumberListToCsv(std::vector<unsigned long long>& list) {
    std::string csv;
    for (const unsigned long long number : list) {
        if (number == 0) continue;
        if (!csv.empty()) csv += ',';
        csv += std::to_string(number);
    }
    return csv;
}

void SequenceNumberUtils::SequenceNumberCsvToList(const std::string& text,
                                                  std::vector<unsigned long long>& list) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        // White space in front of a comma would lead strtoull no further than the comma; in front of
        // nothing it must not lead it past the piece.
        const std::size_t first = text.find_first_not_of(" \t\n\v\f\r", start);
        if (first < comma) {
            const unsigned long long number = std::strtoull(text.c_str() + first, nullptr, 10);
            if (number != 0) list.push_back(number);
        }
        start = comma + 1;
    }
}

}  // namespace quillon
