#include <charconv>
#include <cstdint>
#include <mutex>
#include <optional>

#include "Utils/VersionText.h"
#include "platform/Characters.h"
#include "platform/ModuleApi.h"
#include "platform/VersionResourceApi.h"
#include "quillon/MiscUtils.h"

namespace quillon {

namespace {

using platform::VersionResource;
using platform::VersionTranslation;

constexpr const char* kDefaultVersion = "1.2.3.4";

/// "1, 2, 3, 4" as "1.2.3.4", 20 characters at most.
std::string Tidied(const std::string& text) {
    constexpr int kLongest = 20;
    int length = 0;
    std::string tidied;
    for (const char c : text) {
        const bool isContinuation = (static_cast<unsigned char>(c) & 0xC0) == 0x80;
        if (c == ' ') continue;
        if (!isContinuation && length++ == kLongest) break;
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
        while (text < end && platform::IsSpace(*text)) ++text;
        const auto [next, error] = std::from_chars(text, end, parts[i]);
        if (error != std::errc()) break;
        text = next;
    }
    std::uint64_t packed = 0;
    for (const std::uint64_t part : parts) packed = (packed << 16) + part;
    return std::to_string(packed);
}

}  // namespace quillon
