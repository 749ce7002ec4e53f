#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "quillon/SequenceNumberUtils.h"

namespace {

using quillon::SequenceNumberUtils;
using Numbers = std::vector<unsigned long long>;

Numbers ReadByLibc(const std::string& text) {
    Numbers numbers;
    std::istringstream pieces(text);
    for (std::string piece; std::getline(pieces, piece, ',');) {
        const unsigned long long number = std::strtoull(piece.c_str(), nullptr, 10);
        if (number != 0) numbers.push_back(number);
    }
    return numbers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Numbers numbers;
    SequenceNumberUtils::SequenceNumberCsvToList(text, numbers);
    if (numbers != ReadByLibc(text)) std::abort();

    Numbers again;
    SequenceNumberUtils::SequenceNumberCsvToList(SequenceNumberUtils::SequenceNumberListToCsv(numbers),
                                                 again);
    if (again != numbers) std::abort();
    return 0;
}
