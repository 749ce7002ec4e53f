#include "system/PrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "quillon/PathUtils.h"

namespace quillon::agent {

void MakePrivateFile(const std::string& libraryPath) {
    const int file = ::open(PathUtils::ToSystemPath(libraryPath).c_str(),
                            O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0) ::close(file);
}

}  // namespace quillon::agent
