#include "quillon/Url.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/Characters.h"
#include "base/NumberText.h"
#include "quillon/StringUtils.h"

namespace quillon {

namespace {

constexpr std::string_view kSchemeEnd = "://";

bool IsWordCharacter(char c) { return base::IsDigit(c) || base::IsLetter(c) || c == '_'; }

/// Returns whether there is a character that "." in the pattern does not match.
bool HasLineEnd(std::string_view text) {
    return text.find('\n') != text.npos || text.find('\r') != text.npos;
}

bool IsScheme(const std::string& scheme, const char* expected) {
    return StringUtils::CompareCaseInsensitive(scheme, expected);
}

std::uint32_t DefaultPort(const std::string& scheme) {
    if (IsScheme(scheme, "http")) return 80;
    return IsScheme(scheme, "https") ? 443 : 0;
}

std::string PathOf(std::string_view rest) {
    std::string path(rest.empty() ? std::string_view("/") : rest);
    if (path.find(' ') != path.npos) StringUtils::ReplaceStringInPlace(path, " ", "%20", false);
    return path;
}

}  // namespace

Url::Url(const std::string& raw) : m_raw(raw) {}

Url::Url(std::string scheme, std::string host, std::string path, std::uint32_t port)
    : m_port(port), m_scheme(std::move(scheme)), m_host(std::move(host)), m_path(std::move(path)) {
    m_valid = Validate();
}

// The text must match "^(\w+)://([^/]+)(.*)$", found without backtracking.
Url Url::Parse(const std::string& text) {
    const auto schemeEnd = std::find_if_not(text.begin(), text.end(), IsWordCharacter);
    std::string scheme(text.begin(), schemeEnd);
    const std::string_view behind(schemeEnd, text.end());
    if (scheme.empty() || !behind.starts_with(kSchemeEnd)) return Url(text);

    const std::size_t slash = behind.find('/', kSchemeEnd.size());
    const std::string_view authority = behind.substr(kSchemeEnd.size(), slash - kSchemeEnd.size());
    const std::string_view rest = behind.substr(kSchemeEnd.size() + authority.size());
    if (authority.empty() || HasLineEnd(rest)) return Url(text);

    const std::size_t colon = authority.find(':');
    if (colon == std::string_view::npos) {
        const std::uint32_t port = DefaultPort(scheme);
        return Url(std::move(scheme), std::string(authority), PathOf(rest), port);
    }
    if (colon + 1 == authority.size()) return Url(text);
    return Url(std::move(scheme), std::string(authority.substr(0, colon)), PathOf(rest),
               static_cast<std::uint32_t>(base::ReadSigned<int>(authority.substr(colon + 1))));
}

const std::string& Url::Scheme() const { return m_scheme; }
const std::string& Url::Host() const { return m_host; }
const std::string& Url::Path() const { return m_path; }
unsigned int Url::Port() const { return m_port; }
bool Url::IsValid() const { return m_valid; }

std::string Url::ToString() const {
    if (!m_raw.empty()) return m_raw;
    return m_scheme + "://" + m_host + ':' + std::to_string(m_port) + m_path;
}

bool Url::Validate() const {
    return m_port != 0 && !m_host.empty() && (IsScheme(m_scheme, "http") || IsScheme(m_scheme, "https"));
}

}  // namespace quillon
