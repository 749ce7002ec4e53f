#include "system/FileNameCase.h"

#include <windows.h>

#include "quillon/StringUtils.h"

namespace quillon::agent {

std::string WithoutCase(const std::string& name) {
    std::wstring units = StringUtils::NarrowStringToWide(name);
    const int size = static_cast<int>(units.size());
    // Without linguistic casing the rule is the file system's.
    ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, units.c_str(), size, units.data(), size, nullptr,
                    nullptr, 0);
    return StringUtils::WideStringToNarrow(units);
}

}  // namespace quillon::agent
