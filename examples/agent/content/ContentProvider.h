#pragma once

#include <string>

#include "quillon/IProviderRegistry.h"

namespace quillon::agent {

/// Serves content from directories of this machine, by URLs of the scheme "file". Methods:
/// "IsOkayForDownload", "DownloadFolderContent", "DownloadFileContent"; the codes are
/// those of ContentCode, and 2 for a bad call. The SHA-256 of a file, in hexadecimal digits, is
/// its hash. A failure is logged at Error, once.
///
/// A directory's list is refused whole when it is not to be trusted (ReadContentList);
/// else every file that can be copied is. The table has a row a file: Name, Size, Fault (null
/// when there is none).
class ContentProvider final : public IProvider {
public:
    void InvokeMethod(const std::string& method, VariantList& parameters, InvocationResult& result,
                      void* reserved) override;
};

}  // namespace quillon::agent
