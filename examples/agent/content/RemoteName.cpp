#include "content/RemoteName.h"

#include <algorithm>
#include <string_view>

#include "quillon/StringUtils.h"
#include "system/FileNameCase.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kLongestName = 2048, kLongestComponent = 255;  // bytes
constexpr std::string_view kForbidden = "<>:\"|?*";

bool IsNumbered(std::string_view rest) {
    static constexpr std::string_view numbers[] = {"0", "1", "2", "3",        "4",        "5",       "6",
                                                   "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    return std::find(std::begin(numbers), std::end(numbers), rest) != std::end(numbers);
}

/// Windows opens the device whatever directory and extension come with its name.
bool IsDevice(const std::string& component) {
    static constexpr std::string_view devices[] = {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"};
    std::string base = StringUtils::ToLowercase(component.substr(0, component.find('.')));
    StringUtils::RightTrim(base);
    if (std::find(std::begin(devices), std::end(devices), base) != std::end(devices)) return true;
    return (base.starts_with("com") || base.starts_with("lpt")) &&
           IsNumbered(std::string_view(base).substr(3));
}

bool IsForbidden(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F' || kForbidden.find(c) != std::string_view::npos;
}

const char* FaultOf(const std::string& component) {
    if (component.empty()) return "has an empty component";
    if (component == "." || component == "..") return "has a component \".\" or \"..\"";
    if (component.size() > kLongestComponent) return "has a component that is too long";
    if (std::any_of(component.begin(), component.end(), &IsForbidden))
        return "has a character that no file name may have";
    if (component.ends_with('.') || component.ends_with(' '))
        return "has a component that ends in a dot or a blank";
    return IsDevice(component) ? "has the name of a device" : "";
}

}  // namespace

RemoteName ReadRemoteName(const std::string& name) {
    if (name.empty()) return {{}, "is empty"};
    if (name.size() > kLongestName) return {{}, "is too long"};
    if (StringUtils::NarrowStringToWide(name).empty()) return {{}, "is not UTF-8"};
    RemoteName read;
    std::string text = name;
    std::replace(text.begin(), text.end(), '/', '\\');
    StringUtils::SplitByChar(text, '\\', read.components);
    for (const std::string& component : read.components) {
        read.fault = FaultOf(component);
        if (*read.fault != '\0') break;
    }
    return read;
}

std::string KeyOf(const RemoteName& name) {
    return WithoutCase(StringUtils::StringVecToString(name.components, '\\'));
}

}  // namespace quillon::agent
