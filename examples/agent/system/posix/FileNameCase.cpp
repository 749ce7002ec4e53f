#include "system/FileNameCase.h"

#include <locale.h>
#include <wctype.h>

#include "quillon/StringUtils.h"

namespace quillon::agent {

std::string WithoutCase(const std::string& name) {
    static const ::locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    std::wstring units = StringUtils::NarrowStringToWide(StringUtils::ToUppercase(name));
    if (unicode == nullptr) return StringUtils::WideStringToNarrow(units);
    for (wchar_t& unit : units) unit = static_cast<wchar_t>(::towupper_l(static_cast<wint_t>(unit), unicode));
    return StringUtils::WideStringToNarrow(units);
}

}  // namespace quillon::agent
