#include "system/LogFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "quillon/StringUtils.h"

namespace quillon::agent {

std::string FaultOfLogFile(const std::string& libraryPath) {
    std::FILE* const stream = ::_wfopen(StringUtils::NarrowStringToWide(libraryPath).c_str(), L"ab");
    if (stream == nullptr) return std::generic_category().message(errno);
    std::fclose(stream);
    return {};
}

}  // namespace quillon::agent
