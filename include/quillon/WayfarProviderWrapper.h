#pragma once

#include <cstdint>
#include <string>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"

namespace quillon {

class ICLogger;
class IProvider;

/// Says what a downloaded file must be; the provider compares.
struct ContentExpectation {
    std::int64_t size = 0;  ///< bytes
    std::string hash;
};

/// Downloads content through the host's provider "Wayfar" (IProviderRegistry.h), which is looked up for
/// every call and runs on the calling thread. A module may derive a class of its own, for a test say.
/// Only the Warn entry of ServiceLocator for a missing service is logged,
/// and the Error entry of a getter for an answer of another type. What the provider throws
/// reaches the caller. URLs and paths are UTF-8. Thread-safe as far as the provider is.
///
/// @code
/// void Fetch(WayfarProviderWrapper& wayfar, const std::string& url, InvocationResult& result) {
///     bool failed = false;
///     if (!WayfarProviderWrapper::WayfarIsEnabled() || !wayfar.WayfarIsAvailable(failed, &result)) return;
///     if (!wayfar.Download(url, "C:\\content\\tool.zip", {4096, "0f343b0931126a20f133d67c2b018a3b"}))
///         result.errorMessage = "The download failed";
/// }
/// @endcode
class QUILLON_API WayfarProviderWrapper {
public:
    /// Makes a wrapper; the provider is not looked up yet.
    WayfarProviderWrapper();
    virtual ~WayfarProviderWrapper();

    /// Returns what IAgentConfiguration::IsWayfarEnabled() says; false without a configuration.
    static bool WayfarIsEnabled();

    /// Returns whether a download may start now. `failed` becomes true when that cannot be found out, and
    /// false otherwise. `result`, which may be null, then says why: code 4 without a provider, 5 when the
    /// first row of the answer has no boolean "WayfarOkay"; without a row it is the provider's own.
    [[nodiscard]] virtual bool WayfarIsAvailable(bool& failed, InvocationResult* result);
    /// Downloads one file and returns whether the provider's result code is 0. On failure the system's last
    /// error is what the provider has left there, else 1627 (ERROR_FUNCTION_FAILED), and 1168
    /// (ERROR_NOT_FOUND) without a provider.
    virtual bool Download(const std::string& remoteContentFileUrl, const std::string& localFilePath,
                          const ContentExpectation& expectation);
    /// Downloads a directory by its list (LsZFile.h) and returns whether that succeeded. `result` is the
    /// provider's own; code 4 without a provider.
    virtual bool Download(const std::string& remoteLszUrl, const std::string& remoteContentFolderUrl,
                          const std::string& localFolderPath, InvocationResult& result);

private:
    IProvider* GetWayfarProvider() const;

    [[maybe_unused]] ICLogger* m_logger;
};

}  // namespace quillon
