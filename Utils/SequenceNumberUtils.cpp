#include "quillon/SequenceNumberUtils.h"

#include <algorithm>
#include <string_view>

#include "base/NumberText.h"

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
        std::string_view piece(text.data() + start, comma - start);
        if (const unsigned long long number = base::TakeUnsigned(piece).value_or(0); number != 0)
            list.push_back(number);
        start = comma + 1;
    }
}

}  // namespace quillon
