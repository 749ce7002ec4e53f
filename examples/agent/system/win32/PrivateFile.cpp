#include "system/PrivateFile.h"

#include <windows.h>

#include "quillon/FileSystemUtils.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

/// Nobody else can open the file before it is secured, as it is not shared.
void MakePrivateFile(const std::string& libraryPath) {
    const HANDLE file = ::CreateFileW(StringUtils::NarrowStringToWide(libraryPath).c_str(), GENERIC_WRITE, 0,
                                      nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    // A failure is logged; the rights of the directory hold then.
    static_cast<void>(FileSystemUtils::SecureFile(libraryPath));
    ::CloseHandle(file);
}

}  // namespace quillon::agent
