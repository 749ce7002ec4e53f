#include "quillon/UserUtils.h"

#include <memory>
#include <new>

#include "platform/AccountApi.h"

namespace quillon {

namespace {

using NameBuffer = std::unique_ptr<char[]>;

NameBuffer NewNameBuffer() { return NameBuffer(new (std::nothrow) char[platform::kAccountNameSize]); }

bool ReportNoMemory(const std::function<void(std::string)>& onError, const char* part) {
    if (onError) onError(std::string("failed to allocate global string for ") + part + " part of SID lookup");
    return false;
}

/// Splits at the separator. Both parts may be empty, and neither holds a separator of either kind.
std::tuple<bool, std::string, std::string> SplitAt(char separator, const std::string& text) {
    const char other = separator == '@' ? '\\' : '@';
    const std::size_t place = text.find(separator);
    if (place == std::string::npos || text.find(separator, place + 1) != std::string::npos ||
        text.find(other) != std::string::npos) {
        return {};
    }
    return {true, text.substr(0, place), text.substr(place + 1)};
}

}  // namespace

bool UserUtils::IsUser(const std::wstring& sid, const std::function<void(std::string)>& onError) {
    constexpr const wchar_t* kLocalSystem = L"S-1-5-18";
    if (sid == kLocalSystem) return false;
    const auto parsed = platform::ParseSid(sid);
    if (!parsed) return false;
    const NameBuffer domain = NewNameBuffer();
    if (!domain) return ReportNoMemory(onError, "domain");
    const NameBuffer account = NewNameBuffer();
    if (!account) return ReportNoMemory(onError, "account");
    return platform::IsUserAccount(*parsed, domain.get(), account.get());
}

std::string UserUtils::LuidToString(const LUID& luid) {
    const platform::LuidParts parts = platform::PartsOf(luid);
    return std::to_string(parts.low) + ':' + std::to_string(parts.high);
}

bool UserUtils::SameLuid(const LUID& first, const LUID& second) {
    return platform::PartsOf(first) == platform::PartsOf(second);
}

std::tuple<bool, std::string, std::string> UserUtils::SplitDownLevelLogonName(const std::string& text) {
    return SplitAt('\\', text);
}

std::tuple<bool, std::string, std::string> UserUtils::SplitUserPrincipalName(const std::string& text) {
    return SplitAt('@', text);
}

}  // namespace quillon
