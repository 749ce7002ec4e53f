#include "system/SystemErrorText.h"

#include "quillon/StringUtils.h"

namespace quillon::agent {

std::string SystemErrorText(int code) {
    std::string text = StringUtils::GetErrorAsString(code);
    return StringUtils::Trim(text);
}

}  // namespace quillon::agent
