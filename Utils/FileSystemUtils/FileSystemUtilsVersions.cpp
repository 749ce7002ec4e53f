#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Utils/internal/VersionInformationCache.h"
#include "Utils/internal/VersionText.h"
#include "base/ErrorCodes.h"
#include "base/Utf.h"
#include "platform/ErrorText.h"
#include "platform/VersionResourceApi.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/DestructorFunctor.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

using base::FixedVersion;
using base::VersionTranslation;
using platform::VersionResource;
using Information = FileSystemUtils::VersionInformation;

constexpr const char* NameOf(const char* path) {
    const std::string_view text(path);
    const std::size_t slash = text.find_last_of("/\\");
    return slash == std::string_view::npos ? path : path + slash + 1;
}
constexpr const char* kFile = NameOf(__FILE__);

constexpr bool IsControl(wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

std::string Dotted(std::uint32_t high, std::uint32_t low) {
    const std::uint32_t parts[] = {high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF};
    std::string text;
    for (const std::uint32_t part : parts) text += (text.empty() ? "" : ".") + std::to_string(part);
    return text;
}

/// One call. Everything that is logged is logged at its end: a log entry may need a lock
/// whose owner waits for the path that is held.
class VersionLookup {
public:
    VersionLookup(const std::string& path, const std::string& language)
        : m_path(path), m_language(language) {}

    Information Run();
    void Log(ICLogger& logger);
    /// Why there is no information; 0 when there is.
    [[nodiscard]] std::uint32_t Error() const { return m_error; }

private:
    enum class End { Missing, Kept, NoResource, Unreadable, NoFixed, BadSignature, Read };

    Information Read();
    End ReadResource(Information& information);
    std::string VersionString(const VersionResource& resource, const char* name);
    std::string Cleaned(std::optional<std::wstring> value);
    void Keep(const Information& information);
    void LogKept(ICLogger& logger) const;
    void LogReading(ICLogger& logger) const;
    void LogStored(ICLogger& logger) const;

    const std::string& m_path;
    const std::string& m_language;
    std::string m_shownPath, m_shownLanguage;  // in entries
    VersionInformationCache& m_cache = VersionInformationCache::Instance();
    long long m_modificationTime = 0;
    VersionInformationCache::Kept m_kept;
    End m_end = End::Missing;
    std::size_t m_paths = 0;
    std::uint32_t m_error = 0;
    std::vector<std::wstring> m_invalid;
};

Information VersionLookup::Run() {
    for (;;) {
        bool isDirectory = false;
        const bool exists = FileSystemUtils::Exists(m_path, isDirectory, &m_modificationTime);
        if (!exists || isDirectory) {
            m_error = exists ? base::kAccessDenied : platform::LastError();
            m_paths = m_cache.Drop(m_path);
            return {};
        }
        auto kept = m_cache.Find(m_path, m_language, m_modificationTime);
        if (!kept) continue;
        m_kept = std::move(*kept);
        if (!m_kept.information) return Read();
        m_end = End::Kept;
        m_paths = m_kept.paths;
        if (*m_kept.information == Information{}) m_error = platform::kNoResourceData;
        return *m_kept.information;
    }
}

Information VersionLookup::Read() {
    const DestructorFunctor release([this] { m_cache.Release(m_path); });
    Information information;
    m_end = ReadResource(information);
    Keep(information);
    return information;
}

VersionLookup::End VersionLookup::ReadResource(Information& information) {
    bool isThere = false;
    const auto resource = VersionResource::Load(m_path, &isThere);
    if (!resource) m_error = platform::LastError();
    if (!isThere) return End::NoResource;
    if (!resource) return End::Unreadable;
    const auto fixed = resource->Fixed();
    if (!fixed || fixed->signature != FixedVersion::kSignature) {
        m_error = base::kInvalidData;
        return fixed ? End::BadSignature : End::NoFixed;
    }
    information = {Dotted(fixed->fileHigh, fixed->fileLow), Dotted(fixed->productHigh, fixed->productLow),
                   VersionString(*resource, "FileDescription"), VersionString(*resource, "ProductName"),
                   VersionString(*resource, "OriginalFilename")};
    return End::Read;
}

std::string VersionLookup::VersionString(const VersionResource& resource, const char* name) {
    if (m_language.empty()) {
        return FirstText(resource, [&](VersionTranslation translation) {
            return Cleaned(resource.Value(base::VersionTable(translation), name));
        });
    }
    const auto translations = resource.Translations();
    if (translations.empty()) return {};
    return Cleaned(resource.Value(base::VersionTable(m_language, translations.front().codePage), name));
}

std::string VersionLookup::Cleaned(std::optional<std::wstring> value) {
    if (!value) return {};
    std::erase_if(*value, IsControl);
    auto text = base::WideToUtf8(*value);
    if (!text) m_invalid.push_back(std::move(*value));
    return std::move(text).value_or("");
}

void VersionLookup::Keep(const Information& information) {
    const bool isKept = m_end == End::Read || m_end == End::NoResource;
    m_paths = isKept ? m_cache.Store(m_path, m_language, m_modificationTime, information, m_end == End::Read)
                     : m_cache.Drop(m_path);
}

void VersionLookup::Log(ICLogger& logger) {
    const bool isUsual = m_end == End::Missing || m_end == End::Kept || m_end == End::NoResource;
    if (isUsual && !logger.IsEnabled(ICLogger::Level::Trace)) return;
    m_shownPath = LogText::OneLine(m_path);
    m_shownLanguage = LogText::OneLine(m_language);
    if (m_end == End::Missing) {
        logger.Trace("%s @ %i: '%s' does not exist so no version info", kFile, __LINE__, m_shownPath.c_str());
    } else {
        LogKept(logger);
    }
    if (m_end == End::NoResource) {
        logger.Trace("%s @ %i: '%s' has no version info", kFile, __LINE__, m_shownPath.c_str());
    } else if (m_end != End::Missing && m_end != End::Kept) {
        LogReading(logger);
    }
    logger.Trace("%s @ %i: There is is now information about %u file(s) in the version info cache", kFile,
                 __LINE__, static_cast<unsigned>(m_paths));
}

void VersionLookup::LogKept(ICLogger& logger) const {
    if (!logger.IsEnabled(ICLogger::Level::Trace)) return;
    logger.Trace("%s @ %i: '%s' is%s already in the cache", kFile, __LINE__, m_shownPath.c_str(),
                 m_kept.isKnown ? "" : " not");
    if (!m_kept.isKnown) return;
    const bool isSame = m_modificationTime == m_kept.modificationTime;
    const std::string now = DateTimeUtils::FormatTimeAsISO8601(m_modificationTime);
    const std::string then =
        isSame ? std::string() : DateTimeUtils::FormatTimeAsISO8601(m_kept.modificationTime);
    logger.Trace("    File timestamp is %s, cached timestamp is %s", now.c_str(),
                 (isSame ? now : then).c_str());
    if (!isSame) return;
    logger.Trace("%s @ %i: '%s' has not changed, so using the cached info", kFile, __LINE__,
                 m_shownPath.c_str());
    if (m_end != End::Kept) return;
    logger.Trace("%s @ %i: Info for language '%s' already in the cache", kFile, __LINE__,
                 m_shownLanguage.c_str());
}

void VersionLookup::LogReading(ICLogger& logger) const {
    logger.Trace("%s @ %i: Getting version info about '%s'", kFile, __LINE__, m_shownPath.c_str());
    if (m_end == End::Unreadable) {
        logger.Warn("Could not get version of '%s' because: %s", m_shownPath.c_str(),
                    StringUtils::GetErrorAsString(static_cast<std::int32_t>(m_error)).c_str());
    } else if (m_end == End::NoFixed) {
        logger.Debug("Could not query version of '%s'", m_shownPath.c_str());
    } else if (m_end == End::BadSignature) {
        logger.Debug("Version info of '%s' does not have the expected signature", m_shownPath.c_str());
    } else {
        LogStored(logger);
    }
}

void VersionLookup::LogStored(ICLogger& logger) const {
    for (const std::wstring& text : m_invalid) StringUtils::WideStringToNarrow(text);  // which logs it
    if (!m_kept.isKnown) {
        logger.Debug("Caching version info about '%s' for language '%s'", m_shownPath.c_str(),
                     m_shownLanguage.c_str());
    } else if (m_kept.modificationTime != m_modificationTime) {
        logger.Debug("Replacing cached version info about '%s'", m_shownPath.c_str());
    } else {
        logger.Debug("Adding version info about '%s' for language '%s'", m_shownPath.c_str(),
                     m_shownLanguage.c_str());
    }
}

}  // namespace

FileSystemUtils::VersionInformation FileSystemUtils::GetVersionInformation(const std::string& filePath,
                                                                           const std::string& language) {
    ICLogger* const logger = detail::RegisteredLoggerIfAny();
    if (filePath.empty()) {
        if (logger != nullptr) logger->Debug("GetVersionInformation: empty filePath");
        platform::SetLastErrorCode(base::kPathNotFound);
        return {};
    }
    static const std::string none;
    const bool isValid = base::FindInvalidUtf8(language) == std::string::npos;
    if (!isValid) StringUtils::NarrowStringToWide(language);  // which logs it
    VersionLookup lookup(filePath, isValid ? language : none);
    VersionInformation information = lookup.Run();
    if (logger != nullptr) lookup.Log(*logger);
    platform::SetLastErrorCode(lookup.Error());
    return information;
}

void FileSystemUtils::ClearVersionInformationCache() { VersionInformationCache::Instance().Clear(); }

}  // namespace quillon
