#include "quillon/WayfarProviderWrapper.h"

#include <exception>
#include <optional>

#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/ICLogger.h"
#include "quillon/IProviderRegistry.h"
#include "quillon/ServiceLocator.h"
#include "quillon/VariantList.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

void FailForProvider(InvocationResult& result) {
    result.errorMessage = "Missing 'Wayfar' provider";
    result.resultCode = InvocationResult::kNoContentProvider;
}

/// Returns the boolean of that name; nothing when the row has none.
std::optional<bool> BooleanOf(const VariantList& row, const std::string& name) {
    try {
        return row[name].GetBoolValue();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace

WayfarProviderWrapper::WayfarProviderWrapper() : m_logger(detail::RegisteredLogger()) {}

WayfarProviderWrapper::~WayfarProviderWrapper() = default;

bool WayfarProviderWrapper::WayfarIsEnabled() {
    const auto* const configuration = ServiceLocator::Get<IAgentConfiguration>();
    return configuration != nullptr && configuration->IsWayfarEnabled();
}

IProvider* WayfarProviderWrapper::GetWayfarProvider() const {
    auto* const registry = ServiceLocator::Get<IProviderRegistry>();
    return registry != nullptr ? registry->GetProvider("Wayfar") : nullptr;
}

bool WayfarProviderWrapper::WayfarIsAvailable(bool& failed, InvocationResult* result) {
    InvocationResult local;
    InvocationResult& answer = result != nullptr ? *result : local;
    failed = true;
    IProvider* const provider = GetWayfarProvider();
    if (provider == nullptr) {
        FailForProvider(answer);
        return false;
    }
    VariantList none;
    provider->InvokeMethod("IsOkayForDownload", none, answer, nullptr);
    const VariantList* const row = answer.resultTable.GetFirstRow();
    if (row == nullptr) return false;
    const auto isOkay = BooleanOf(*row, "WayfarOkay");
    if (!isOkay) {
        answer.errorMessage = "Unexpected result from Wayfar availability test";
        answer.resultCode = InvocationResult::kUnusableContentAnswer;
        return false;
    }
    failed = false;
    return *isOkay;
}

bool WayfarProviderWrapper::Download(const std::string& remoteContentFileUrl,
                                     const std::string& localFilePath,
                                     const ContentExpectation& expectation) {
    IProvider* const provider = GetWayfarProvider();
    if (provider == nullptr) return platform::FailWithCode(base::kNotFound);
    VariantList parameters;
    parameters.Add("RemoteContentFileUrl", remoteContentFileUrl);
    parameters.Add("FileHash", expectation.hash);
    parameters.Add("FileSize", static_cast<long long>(expectation.size));
    parameters.Add("LocalFilePath", localFilePath);
    InvocationResult result;
    platform::SetLastErrorCode(base::kSuccess);
    provider->InvokeMethod("DownloadFileContent", parameters, result, nullptr);
    if (result.resultCode == 0) return true;
    return platform::FailWithCode(platform::LastError() == base::kSuccess ? base::kFunctionFailed
                                                                          : platform::LastError());
}

bool WayfarProviderWrapper::Download(const std::string& remoteLszUrl,
                                     const std::string& remoteContentFolderUrl,
                                     const std::string& localFolderPath, InvocationResult& result) {
    IProvider* const provider = GetWayfarProvider();
    if (provider == nullptr) {
        FailForProvider(result);
        return false;
    }
    VariantList parameters;
    parameters.Add("RemoteContentFolderUrl", remoteContentFolderUrl);
    parameters.Add("RemoteLszUrl", remoteLszUrl);
    parameters.Add("LocalFolderPath", localFolderPath);
    provider->InvokeMethod("DownloadFolderContent", parameters, result, nullptr);
    return result.resultCode == 0;
}

}  // namespace quillon
