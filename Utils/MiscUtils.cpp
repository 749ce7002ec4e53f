#include "quillon/MiscUtils.h"

#include <bit>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <thread>

#include "Utils/internal/VersionText.h"
#include "base/Characters.h"
#include "base/ErrorCodes.h"
#include "base/Utf8Cut.h"
#include "platform/EnvironmentApi.h"
#include "platform/ErrorText.h"
#include "platform/ModuleApi.h"
#include "platform/RegistryApi.h"
#include "platform/SystemVersionApi.h"
#include "platform/VersionResourceApi.h"
#include "quillon/LogText.h"
#include "quillon/RegistryUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

/// Windows 8 and later stay at its numbers towards who does not ask the registry.
bool HasNumbersInRegistry(unsigned long major, unsigned long minor) {
    return major >= 7 || (major == 6 && minor >= 2);
}

unsigned long ReadBuildNumber(const RegKey& key) {
    std::string text;
    RegistryUtils::ReadWindowsRegistryValue(key, "CurrentBuildNumber", text);
    unsigned long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

using base::VersionTranslation;
using platform::VersionResource;

constexpr const char* kDefaultVersion = "1.2.3.4";

/// "1, 2, 3, 4" as "1.2.3.4", 20 characters at most.
std::string Tidied(const std::string& text) {
    constexpr int kLongest = 20;
    int length = 0;
    std::string tidied;
    for (const char c : text) {
        if (c == ' ') continue;
        if (!base::IsUtf8Continuation(c) && length++ == kLongest) break;
        tidied.push_back(c == ',' ? '.' : c);
    }
    return tidied;
}

std::string VersionTextOf(const std::string& path) {
    const auto resource = VersionResource::Load(path);
    if (!resource) return {};
    return Tidied(FirstText(*resource, [&](VersionTranslation translation) {
        return resource->Text(translation, "FileVersion").value_or("");
    }));
}

struct KeptVersion {
    std::mutex mutex;
    std::optional<std::string> text;
};

/// Never destroyed: threads may log while the process ends.
KeptVersion& ProcessVersion() {
    static KeptVersion& kept = *new KeptVersion;
    return kept;
}

}  // namespace

std::string MiscUtils::GetEnvVar(const char* name, bool* missing) {
    platform::SetLastErrorCode(0);
    const auto value = platform::ReadVariable(name);
    const auto code = platform::LastError();
    const bool isRead = value && !value->empty();
    if (missing != nullptr) *missing = !isRead;
    if (isRead) return *value;
    if (!value && code != base::kVariableNotFound) {
        if (ICLogger* const logger = detail::RegisteredLoggerIfAny()) {
            logger->Warn("Could not get value of environment variable '%s' because: %s",
                         LogText::OneLine(name).c_str(),
                         StringUtils::GetErrorAsString(static_cast<std::int32_t>(code)).c_str());
        }
    }
    return {};
}

bool MiscUtils::SetEnvVar(const char* name, const char* value) {
    return platform::WriteVariable(name, value);
}

void MiscUtils::UnsetEnvVar(const char* name) { platform::WriteVariable(name, nullptr); }

long MiscUtils::GetRandomNumberInRange(long low, long high) {
    if (high == 0) return 0;
    if (high <= low) return low;
    std::mt19937 engine(std::random_device{}());
    return std::uniform_int_distribution<long>(low, high)(engine);
}

Version MiscUtils::OsVersion() {
    const auto reported = platform::ReportedSystemVersion();
    unsigned long major = reported.major;
    unsigned long minor = reported.minor;
    const auto handle = platform::OpenMachineKey("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
    if (!handle) return Version(major, minor, 0, 0);

    const RegKey key{{}, handle.Get()};
    if (HasNumbersInRegistry(major, minor) &&
        RegistryUtils::ReadWindowsRegistryValue(key, "CurrentMajorVersionNumber", major)) {
        RegistryUtils::ReadWindowsRegistryValue(key, "CurrentMinorVersionNumber", minor);
    }
    unsigned long revision = 0;
    RegistryUtils::ReadWindowsRegistryValue(key, "UBR", revision);
    return Version(major, minor, ReadBuildNumber(key), revision);
}

bool MiscUtils::GetDllHandle(HINSTANCE& module, void* address) {
    const HINSTANCE found = platform::ModuleOfAddress(address);
    if (found != nullptr) {
        module = found;
        return true;
    }
    const std::string reason = StringUtils::GetLastErrorAsString();
    if (ICLogger* const logger = detail::RegisteredLoggerIfAny()) {
        logger->Error("Could not get DLL details because: %s", reason.c_str());
    }
    return false;
}

bool MiscUtils::IsLittleEndian() { return std::endian::native == std::endian::little; }

void MiscUtils::ThreadSleepMs(long long ms) {
    if (ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::string MiscUtils::GetFileVersionNumber(const std::string& path) { return VersionTextOf(path); }

std::string MiscUtils::GetVersionNumber(ICLogger* logger) {
    KeptVersion& kept = ProcessVersion();
    {
        const std::lock_guard lock(kept.mutex);
        if (kept.text) return *kept.text;
        kept.text = VersionTextOf(platform::ExecutablePath().value_or(""));
        if (!kept.text->empty()) return *kept.text;
        kept.text = kDefaultVersion;
    }
    // Outside the lock: an entry may roll the log over, which asks for the version.
    if (logger != nullptr) logger->Error("Could not get version; defaulting to '%s'", kDefaultVersion);
    return kDefaultVersion;
}

std::string MiscUtils::PackVersionNumberString(const std::string& version) {
    constexpr int kParts = 4;
    const char* text = version.data();
    const char* const end = text + version.size();
    std::uint64_t parts[kParts] = {};
    for (int i = 0; i < kParts && text < end; ++i) {
        if (i > 0) ++text;  // one separator, whatever it is
        while (text < end && base::IsSpace(*text)) ++text;
        const auto [next, error] = std::from_chars(text, end, parts[i]);
        if (error != std::errc()) break;
        text = next;
    }
    std::uint64_t packed = 0;
    for (const std::uint64_t part : parts) packed = (packed << 16) + part;
    return std::to_string(packed);
}

}  // namespace quillon
