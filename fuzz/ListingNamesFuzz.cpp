#include <cstdint>
#include <string>

#include "Require.h"
#include "base/PathEscapes.h"
#include "base/Utf.h"
#include "platform/native/NativePath.h"

// A name that a directory holds, in any bytes, as a listing of files tells it: a name in valid UTF-8 that
// leads back to the same file, and to no other one. The same for names of Windows.
namespace {

using namespace quillon;

bool IsUtf8(const std::string& text) { return base::FindInvalidUtf8(text) == std::string::npos; }

void CheckNative(const std::string& native) {
    const std::string name = platform::LibraryName(native);
    Require(IsUtf8(name) && name.find('\\') == std::string::npos);
    Require(platform::NativeElement(name) == native);
    const std::string path = platform::LibraryPath("/folder/" + native);
    Require(path == "C:\\folder\\" + name && platform::NativePath(path) == "/folder/" + native);
    Require(platform::NativePath("\\\\?\\" + path) == "/folder/" + native);
}

std::wstring UnitsOf(const std::string& bytes) {
    std::wstring units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit =
            static_cast<unsigned char>(bytes[i]) << 8 | static_cast<unsigned char>(bytes[i + 1]);
        if (unit != 0 && unit != L'/' && unit != L'\\') units += static_cast<wchar_t>(unit);
    }
    return units;
}

void CheckWindows(const std::wstring& name) {
    const std::string text = base::NameToUtf8(name);
    Require(IsUtf8(text) && base::PathToWide(text) == name);
    Require(base::PathToWide(base::PathToUtf8(name)) == name);
    Require(text.find_first_of(std::string_view("\0/\\", 3)) == std::string::npos);
    if (name != L"." && name != L"..") Require(text.empty() || (text.back() != '.' && text.back() != ' '));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    CheckWindows(UnitsOf(bytes));
    if (bytes.empty() || bytes.find_first_of(std::string_view("\0/", 2)) != std::string::npos) return 0;
    if (bytes != "." && bytes != "..") CheckNative(bytes);
    return 0;
}
