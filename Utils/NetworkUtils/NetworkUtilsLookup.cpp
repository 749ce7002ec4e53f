#include <algorithm>
#include <chrono>

#include "Utils/internal/NetworkLookup.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/NetworkUtils.h"
#include "quillon/WindowsSockets.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr int kTimedOut = -1;

/// For the name and the limit in seconds.
const char* FormatOf(LookupResult::End end) {
    switch (end) {
        case LookupResult::End::TimedOut:
            return " -> DNS resolution of %s has timed out after %d seconds";
        case LookupResult::End::NotStarted:
            return " -> DNS resolution of %s has not started within %d seconds: too many are under way";
        default:
            return " -> DNS resolution of %s has returned within %d seconds";
    }
}

}  // namespace

int NetworkUtils::getaddrinfo_OrTimeout(const char* node, const char* service, addrinfo* hints,
                                        std::unique_ptr<addrinfo, void (*)(addrinfo*)>& result,
                                        int timeoutSecs) {
    const int limit = std::max(timeoutSecs, 1);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(limit);
    WindowsSockets::GetInstance()->InitializeSockets();
    const std::string shown = LogText::OneLine(node == nullptr ? "(null)" : node);
    const char* const name = shown.c_str();
    const LookupResult found = LookUp(platform::QueryOf(node, service, hints), deadline);
    ICLogger* const logger = detail::RegisteredLogger();
    if (found.end != LookupResult::End::Answered) {
        result.reset();
        if (logger != nullptr) logger->Warn(FormatOf(found.end), name, limit);
        return kTimedOut;
    }
    if (platform::IsOwnList(found.list)) {
        result = {found.list, &FreeAddrInfoRobust};
    } else {
        result.reset(found.list);
    }
    if (logger != nullptr) logger->Debug(FormatOf(found.end), name, limit);
    return found.code;
}

std::string NetworkUtils::LookupErrorText(int code) {
    if (code == kTimedOut) return "the look-up has timed out";
    std::string text = platform::ResolverErrorText(code);
    return text.empty() ? "code " + std::to_string(code) : text;
}

void NetworkUtils::SetLookupLimits(std::size_t awaited, std::size_t all) {
    quillon::SetLookupLimits({std::max<std::size_t>(awaited, 1), std::max<std::size_t>(all, 1)});
}

void NetworkUtils::FreeAddrInfoRobust(addrinfo* list) { platform::FreeAddresses(list); }

}  // namespace quillon
