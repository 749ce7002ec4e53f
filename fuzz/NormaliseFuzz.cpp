#include <algorithm>
#include <cstdint>
#include <string>

#include "Require.h"
#include "base/Utf.h"
#include "quillon/PathUtils.h"

// A path in UTF-8. Its normal form is a normal form, but for a server that is named ".", and never longer by
// more than the "." of an empty path. It has no "/", a "." only in front or behind the root, a ".." only
// where nothing is before it, and the wide form says the same.
namespace {

using quillon::PathUtils;

/// Looks at the elements after the root.
void CheckElements(const std::string& path) {
    bool isUp = true;
    const std::size_t root = path.starts_with('\\') ? 1 : 0;
    std::size_t begin = root;
    while (begin < path.size()) {
        const std::size_t end = std::min(path.find('\\', begin), path.size());
        const std::string element = path.substr(begin, end - begin);
        Require(!element.empty() && (element != "." || begin == root));
        Require(element != ".." || isUp);
        isUp = isUp && (element == ".." || element == ".");
        begin = end + 1;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string given(reinterpret_cast<const char*>(data), size);
    std::string path = given;
    PathUtils::Normalise(path);
    Require(path.find('/') == std::string::npos && path.size() <= given.size() + 1);
    std::string again = path;
    Require(PathUtils::Normalise(again) == path || path == "\\\\.");
    // Drives, shares and "\\?\" are roots with rules of their own.
    if (path.find(':') == std::string::npos && !path.starts_with("\\\\")) CheckElements(path);
    if (quillon::base::FindInvalidUtf8(given) != std::string::npos) return 0;
    std::wstring wide = quillon::base::ToWide(given);
    Require(quillon::base::ToUtf8(PathUtils::Normalise(wide)) == path);
    return 0;
}
