#include "platform/native/NativePath.h"

#include <algorithm>
#include <cerrno>

#include "base/PathText.h"
#include "base/Utf.h"

namespace quillon::platform {

namespace {

constexpr std::string_view kNowhere = "/nonexistent/";
constexpr std::string_view kVolumeName = "HarddiskVolume1\\";

std::string& VolumeRoot() {
    // Never destroyed: threads may open files while the process ends.
    static std::string& root = *new std::string;
    return root;
}

std::string WithSlashes(std::string_view path) {
    std::string result(path);
    std::replace(result.begin(), result.end(), '\\', '/');
    return result;
}

std::string BelowRoot(std::string_view rest) { return VolumeRoot() + WithSlashes(rest); }

std::string Nowhere(std::string_view rest) { return std::string(kNowhere) + WithSlashes(rest); }

std::string OnDrive(std::string_view path) {
    if (path[0] != 'C' && path[0] != 'c') return Nowhere(path);
    const std::string_view rest = path.substr(2);
    if (rest.empty()) return BelowRoot("/");
    return base::IsSeparator(rest[0]) ? BelowRoot(rest) : WithSlashes(rest);  // "C:x": in the current folder
}

/// The length of a character that LibraryName() writes; 0 for any other text.
constexpr std::size_t kEscapeLength = 3;

/// Returns whether the text begins with U+F05C or with one of U+F080 to U+F0FF.
bool StartsWithEscape(std::string_view text) {
    if (text.size() < kEscapeLength || (text[2] & 0xC0) != 0x80) return false;
    return text.starts_with("\xEF\x82") || text.starts_with("\xEF\x83") || text.starts_with("\xEF\x81\x9C");
}

void AppendEscape(std::string& text, char c) {
    const auto byte = static_cast<unsigned char>(c);
    text += {'\xEF', static_cast<char>(0x80 | (byte >> 6)), static_cast<char>(0x80 | (byte & 0x3F))};
}

/// Only what AppendEscape() writes is decoded: no escape becomes a separator, a dot or a NUL.
std::string Unescaped(std::string text) {
    std::size_t end = text.find('\xEF');
    if (end == std::string::npos) return text;
    for (std::size_t at = end; at < text.size();) {
        const bool isEscape = StartsWithEscape(std::string_view(text).substr(at));
        text[end++] = isEscape ? static_cast<char>((text[at + 1] << 6) | (text[at + 2] & 0x3F)) : text[at];
        at += isEscape ? kEscapeLength : 1;
    }
    text.resize(end);
    return text;
}

/// Escapes what is valid UTF-8.
void AppendValid(std::string& result, std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\') {
            AppendEscape(result, text[at]);
        } else if (StartsWithEscape(text.substr(at))) {
            for (const char c : text.substr(at, kEscapeLength)) AppendEscape(result, c);
            at += kEscapeLength - 1;
        } else {
            result.push_back(text[at]);
        }
    }
}

/// Most names have no other characters.
bool IsPlain(char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\\'; }

std::nullopt_t RefuseName() {
    errno = EILSEQ;
    return std::nullopt;
}

std::string WithoutEscapes(std::string_view rest) {
    if (rest.starts_with(R"(\\?\)")) {
        rest.remove_prefix(4);
        if (rest.starts_with(kVolumeName)) return BelowRoot(rest.substr(kVolumeName.size() - 1));
        return base::StartsWithDrive(rest) ? OnDrive(rest) : Nowhere(rest);
    }
    if (rest.starts_with(R"(\\)")) return Nowhere(rest);  // another machine's, or a device
    if (base::StartsWithDrive(rest)) return OnDrive(rest);
    return rest.starts_with('\\') ? BelowRoot(rest) : WithSlashes(rest);
}

}  // namespace

std::optional<std::string> NativePath(const std::string& path) {
    if (path.find('\0') != std::string::npos) return RefuseName();
    return Unescaped(WithoutEscapes(path));
}

std::optional<std::string> NativeName(const std::string& path) {
    std::optional<std::string> native = NativePath(path);
    while (native && native->size() > 1 && native->back() == '/') native->pop_back();
    return native;
}

std::optional<std::string> NativeElement(const std::string& name) {
    if (name.find('\0') != std::string::npos || name.find('/') != std::string::npos) return RefuseName();
    return Unescaped(name);
}

std::string LibraryName(std::string_view nativeName) {
    if (std::all_of(nativeName.begin(), nativeName.end(), &IsPlain)) return std::string(nativeName);
    std::size_t valid = base::FindInvalidUtf8(nativeName);
    std::string result;
    while (!nativeName.empty()) {
        AppendValid(result, nativeName.substr(0, valid));
        if (valid == std::string_view::npos) break;
        AppendEscape(result, nativeName[valid]);
        nativeName.remove_prefix(valid + 1);
        valid = base::FindInvalidUtf8(nativeName);
    }
    return result;
}

std::string LibraryPath(std::string_view nativePath) {
    std::string result;
    if (nativePath.starts_with('/')) {
        const std::string& root = VolumeRoot();
        if (!nativePath.starts_with(root)) return LibraryName(nativePath);
        const std::string_view below = nativePath.substr(root.size());
        if (below.empty()) return "C:\\";
        if (below[0] != '/') return LibraryName(nativePath);
        nativePath = below;
        result = "C:";
    }
    result += LibraryName(nativePath);
    std::replace(result.begin(), result.end(), '/', '\\');
    return result;
}

void SetVolumeRoot(const std::string& nativeFolder) { VolumeRoot() = nativeFolder; }

}  // namespace quillon::platform
