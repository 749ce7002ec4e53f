#include "content/FileUrl.h"

#include <algorithm>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

/// Takes a prefix, in any case, off the text.
bool Take(std::string& text, const std::string& prefix) {
    if (!StringUtils::CompareCaseInsensitive(text.substr(0, prefix.size()), prefix)) return false;
    text.erase(0, prefix.size());
    return true;
}

bool BeginsWithDrive(const std::string& path) {
    if (path.size() < 3 || path[0] != '/' || path[2] != ':') return false;
    const char letter = StringUtils::ToLowercase(path.substr(1, 1))[0];
    return letter >= 'a' && letter <= 'z';
}

}  // namespace

std::string PathOfFileUrl(const std::string& url) {
    std::string path = url;
    if (!Take(path, "file://") || path.find_first_of("?#") != std::string::npos) return {};
    Take(path, "localhost");
    path = StringUtils::UrlDecode(path);
    // A second separator would make it the path of a server.
    if (!path.starts_with('/') || path.find_first_of("/\\", 1) == 1) return {};
    if (path.find('\0') != std::string::npos) return {};
    if (BeginsWithDrive(path)) path.erase(0, 1);
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

}  // namespace quillon::agent
