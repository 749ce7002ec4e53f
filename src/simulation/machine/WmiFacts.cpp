#include "simulation/machine/WmiFacts.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/CivilTime.h"
#include "base/Utf.h"
#include "platform/FileApi.h"
#include "platform/TimeApi.h"
#include "platform/native/EntryNames.h"
#include "platform/native/ProcFile.h"
#include "simulation/wmi/WmiCoercion.h"

namespace quillon::simulation {

namespace {

constexpr std::int64_t kMicroseconds = 1'000'000;

/// "yyyymmddHHMMSS.mmmmmm+UUU": local time and its minutes east of UTC.
std::optional<std::string> CimDateTime(std::int64_t time) {
    const auto fields = platform::LocalFields(base::FloorDivide(time, kMicroseconds));
    if (!fields) return std::nullopt;
    const long offset = fields->tm_gmtoff / 60;
    char text[64];
    std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d.%06d%c%03ld", fields->tm_year + 1900,
                  fields->tm_mon + 1, fields->tm_mday, fields->tm_hour, fields->tm_min, fields->tm_sec,
                  static_cast<int>(base::FloorRemainder(time, kMicroseconds)), offset < 0 ? '-' : '+',
                  offset < 0 ? -offset : offset);
    return text;
}

_variant_t TextArray(const std::vector<std::string>& texts) {
    _variant_t array;
    array.parray = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
    if (array.parray == nullptr) return array;
    array.vt = VT_ARRAY | VT_BSTR;
    for (LONG i = 0; i < static_cast<LONG>(texts.size()); ++i) {
        const _variant_t text = TextVariant(base::ToWide(texts[static_cast<std::size_t>(i)]));
        if (FAILED(SafeArrayPutElement(array.parray, &i, text.bstrVal))) return {};
    }
    return array;
}

}  // namespace

_variant_t WmiFact::As(CIMTYPE type) const {
    _variant_t value;
    const auto* const number = std::get_if<std::int64_t>(&m_value);
    if (number != nullptr && type == CIM_DATETIME) return WmiFact(CimDateTime(*number)).As(CIM_STRING);
    if (number != nullptr) value = IntegerVariant(VT_I8, *number);
    if (const auto* const truth = std::get_if<bool>(&m_value)) value = _variant_t(*truth);
    if (const auto* const text = std::get_if<std::string>(&m_value)) {
        value = TextVariant(base::ToWide(*text));
    }
    if (const auto* const texts = std::get_if<std::vector<std::string>>(&m_value)) value = TextArray(*texts);
    _variant_t converted;
    if (value.vt == VT_EMPTY || FAILED(Coerce(value, type, converted))) converted.Clear();
    if (converted.vt == VT_EMPTY) converted.vt = VT_NULL;
    return converted;
}

void AddMachineFacts(WmiRepository& repository) {
    for (const auto make : {OperatingSystemClass, ComputerSystemClass, ProcessClass, LogicalDiskClass,
                            NetworkAdapterClass, NetworkAdapterConfigurationClass, ServiceClass, BiosClass,
                            UserAccountClass, QuickFixEngineeringClass}) {
        repository.AddClass(L"ROOT\\CIMV2", make());
    }
}

std::string NodeName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : std::string();
}

std::optional<std::string> ReadFact(const std::string& path) {
    auto content = platform::ReadWholeFile(path);
    while (content && !content->empty() && base::IsSpace(content->back())) content->pop_back();
    return content && content->empty() ? std::nullopt : content;
}

bool IsGoneOrForeign(int error) {
    return error == ENOENT || error == ENOTDIR || error == ESRCH || error == EACCES || error == EPERM;
}

std::vector<std::string> NamesWithin(const std::string& folder) {
    auto names = platform::EntryNames(folder);
    if (!names && !IsGoneOrForeign(errno))
        throw std::system_error(errno, std::generic_category(), folder + " cannot be listed");
    return std::move(names).value_or(std::vector<std::string>());
}

std::optional<long long> MemoryKilobytes(std::string_view label) {
    return platform::NumberAfter(ReadFact("/proc/meminfo").value_or(""), label);
}

std::optional<std::int64_t> BootTime() {
    const auto seconds = platform::NumberAfter(ReadFact("/proc/stat").value_or(""), "\nbtime");
    return seconds ? std::optional(*seconds * kMicroseconds) : std::nullopt;
}

std::int64_t CurrentTime() {
    using std::chrono::system_clock;
    return std::chrono::floor<std::chrono::microseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace quillon::simulation
