#include "logging/EntryText.h"

#include <new>

#include "base/OwnFigures.h"
#include "quillon/StringUtils.h"

namespace quillon {

std::optional<std::string> EntryText(const char* format, std::va_list arguments) noexcept try {
    return StringUtils::Format(format, arguments);
} catch (const std::bad_alloc&) {
    base::CountDroppedLogLine();
    return std::nullopt;
}

}  // namespace quillon
