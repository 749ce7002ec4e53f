#include "system/SystemErrorText.h"

#include <system_error>

namespace quillon::agent {

std::string SystemErrorText(int code) { return std::generic_category().message(code); }

}  // namespace quillon::agent
