#include "simulation/wql/WqlDateTime.h"

#include "base/Characters.h"
#include "base/CivilTime.h"

namespace quillon::simulation {

namespace {

constexpr std::size_t kLength = 25, kPoint = 14, kSign = 21;

bool HasForm(std::wstring_view text) {
    if (text.size() != kLength || text[kPoint] != L'.') return false;
    if (text[kSign] != L'+' && text[kSign] != L'-') return false;
    for (std::size_t i = 0; i < kLength; ++i) {
        if (i != kPoint && i != kSign && !base::IsDigit(text[i])) return false;
    }
    return true;
}

std::int64_t Number(std::wstring_view digits) {
    std::int64_t number = 0;
    for (const wchar_t digit : digits) number = number * 10 + (digit - L'0');
    return number;
}

}  // namespace

std::optional<std::int64_t> InstantOf(std::wstring_view text) {
    constexpr std::int64_t kMicroseconds = 1'000'000;
    if (!HasForm(text)) return std::nullopt;
    const auto field = [text](std::size_t at, std::size_t length) { return Number(text.substr(at, length)); };
    const auto month = static_cast<int>(field(4, 2));
    if (month < 1 || month > 12) return std::nullopt;
    const std::int64_t offset = field(22, 3) * (text[kSign] == L'-' ? -60 : 60);
    const std::int64_t seconds = base::DaysFromCivil(field(0, 4), month, field(6, 2)) * base::kSecondsPerDay +
                                 field(8, 2) * 3600 + field(10, 2) * 60 + field(12, 2) - offset;
    return seconds * kMicroseconds + field(15, 6);
}

}  // namespace quillon::simulation
