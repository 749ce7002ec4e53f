#include "platform/VersionResourceApi.h"

#include "base/HexDigits.h"
#include "base/Utf.h"

namespace quillon::platform {

std::optional<std::string> VersionResource::Text(base::VersionTranslation translation,
                                                 const char* name) const {
    const auto value = Value(base::VersionTable(translation), name);
    if (!value) return std::nullopt;
    return base::ToUtf8(std::wstring_view(*value).substr(0, value->find(L'\0')));
}

}  // namespace quillon::platform
