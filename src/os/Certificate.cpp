#include "quillon/Certificate.h"

#include <algorithm>
#include <cstddef>

#include "base/ErrorCodes.h"
#include "platform/CertificateApi.h"
#include "platform/ErrorText.h"
#include "platform/FileApi.h"
#include "quillon/CertificateUtils.h"
#include "quillon/DateTimeUtils.h"

namespace quillon {

namespace {

constexpr std::size_t kLargestFile = std::size_t{16} << 20;

std::optional<std::string> ContentOf(const std::string& path) {
    std::string content;
    const bool isRead = platform::ReadPieces(path, [&content](std::string_view piece) {
        content += piece;
        return content.size() <= kLargestFile;
    });
    if (isRead && content.size() <= kLargestFile) return content;
    if (isRead) platform::SetLastErrorCode(base::kNotEnoughMemory);
    return std::nullopt;
}

/// Takes the first whole PEM block off the front of `text`, with what stands before it, such as a block that
/// was cut; empty when there is no whole one.
std::string_view TakePemBlock(std::string_view& text) {
    constexpr std::string_view kBegin = "-----BEGIN ";
    constexpr std::string_view kEnd = "-----END ";
    constexpr std::string_view kDashes = "-----";
    text.remove_prefix(std::min(text.find(kBegin), text.size()));
    const std::size_t end = text.find(kEnd);
    if (end == std::string_view::npos) return {};
    text.remove_prefix(text.substr(0, end).rfind(kBegin));
    const std::size_t lastLine = text.find(kEnd);
    const std::string_view lines = text.substr(0, text.find('\n', lastLine));
    // Files that were joined may have the next block on the same line.
    const std::size_t dashes = lines.find(kDashes, lastLine + kEnd.size());
    const std::string_view block =
        lines.substr(0, std::min(dashes, lines.size() - kDashes.size()) + kDashes.size());
    text.remove_prefix(block.size());
    return block;
}

platform::CertificateStores SystemStores(Certificate::Stores stores) {
    if (stores == Certificate::Stores::User) return platform::CertificateStores::User;
    return stores == Certificate::Stores::Service ? platform::CertificateStores::Service
                                                  : platform::CertificateStores::Computer;
}

}  // namespace

Certificate Certificate::Share(const CERT_CONTEXT* owned) {
    return Certificate(std::shared_ptr<const CERT_CONTEXT>(owned, &platform::CertificateTraits::Close));
}

std::optional<Certificate> Certificate::Parse(std::string_view bytes) {
    platform::CertificateHandle certificate = platform::ReadCertificate(bytes);
    return certificate ? std::optional(Share(certificate.Release())) : std::nullopt;
}

bool Certificate::ReadFile(const std::string& path, std::vector<Certificate>& certificates) {
    const auto content = ContentOf(path);
    if (!content) return false;
    const auto add = [&certificates](std::string_view bytes) {
        if (auto certificate = Parse(bytes)) certificates.push_back(*std::move(certificate));
    };
    std::string_view left = *content;
    std::string_view block = TakePemBlock(left);
    if (block.empty()) add(*content);
    for (; !block.empty(); block = TakePemBlock(left)) add(block);
    return true;
}

bool Certificate::ReadStore(const std::wstring& storeName, std::vector<Certificate>& certificates) {
    return ReadStore(Stores::Computer, storeName, certificates);
}

bool Certificate::ReadStore(Stores stores, const std::wstring& storeName,
                            std::vector<Certificate>& certificates) {
    std::vector<platform::CertificateHandle> found;
    if (!platform::ReadCertificateStore(SystemStores(stores), storeName, found)) return false;
    for (auto& certificate : found) certificates.push_back(Share(certificate.Release()));
    return true;
}

std::string Certificate::Subject() const {
    return CertificateUtils::GetCertBlobInfo(m_context->pCertInfo->Subject);
}

std::string Certificate::Issuer() const {
    return CertificateUtils::GetCertBlobInfo(m_context->pCertInfo->Issuer);
}

TimePoint Certificate::NotBefore() const {
    return DateTimeUtils::FileTimeToTimePoint(m_context->pCertInfo->NotBefore);
}

TimePoint Certificate::NotAfter() const {
    return DateTimeUtils::FileTimeToTimePoint(m_context->pCertInfo->NotAfter);
}

}  // namespace quillon
