#pragma once

#include <cstdint>
#include <string>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"

namespace quillon {

class ICLogger;
class IProvider;

/// What a downloaded file must be.
struct ContentExpectation {
    std::int64_t size = 0;  ///< bytes
    std::string hash;
};

/// Downloads content through the provider that the host registers as "Wayfar". It is
/// looked up for every call. A module may put its own in place. Nothing is logged but
/// what ServiceLocator says of a missing service. What a provider throws reaches the caller,
/// unless an operation says otherwise.
class QUILLON_API WayfarProviderWrapper {
public:
    WayfarProviderWrapper();
    virtual ~WayfarProviderWrapper();

    /// The host's configuration allows it.
    static bool WayfarIsEnabled();

    /// Whether a download may begin now. `failed` is set when that cannot be told;
    /// `result`, which may be null, then says why: code 4 without a provider, 5 when its answer
    /// is of no use.
    virtual bool WayfarIsAvailable(bool& failed, InvocationResult* result);
    /// One file.
    virtual bool Download(const std::string& remoteContentFileUrl, const std::string& localFilePath,
                          const ContentExpectation& expectation);
    /// A folder by its list. `result` is the provider's own; code 4 without a provider.
    virtual bool Download(const std::string& remoteLszUrl, const std::string& remoteContentFolderUrl,
                          const std::string& localFolderPath, InvocationResult& result);

private:
    IProvider* GetWayfarProvider() const;

    [[maybe_unused]] ICLogger* m_logger;
};

}  // namespace quillon
