#include "base/VersionRecords.h"

#include "base/HexDigits.h"

namespace quillon::base {

namespace {

std::string FourDigits(std::uint16_t number) {
    std::string digits;
    for (int shift = 12; shift >= 0; shift -= 4) digits.push_back(kLowerDigits[number >> shift & 0xF]);
    return digits;
}

}  // namespace

std::string VersionTable(const std::string& language, std::uint16_t codePage) {
    return language + FourDigits(codePage);
}

std::string VersionTable(VersionTranslation translation) {
    return VersionTable(FourDigits(translation.language), translation.codePage);
}

}  // namespace quillon::base
