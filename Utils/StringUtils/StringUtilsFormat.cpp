#include <algorithm>
#include <array>
#include <charconv>

#include "base/PrintfFormat.h"
#include "platform/ErrorText.h"
#include "platform/TextApi.h"
#include "quillon/ICLogger.h"
#include "quillon/StringUtils.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

constexpr std::size_t kFormatBuffer = 10000;
constexpr unsigned int kMostIndent = 40;
constexpr char kIndent[] = "                                        ";
static_assert(sizeof kIndent == kMostIndent + 1);

/// The code as "5/0X5".
std::string DecimalAndHex(std::int32_t code) {
    std::array<char, 8> hex;
    const auto end = std::to_chars(hex.begin(), hex.end(), static_cast<std::uint32_t>(code), 16).ptr;
    return std::to_string(code) + "/0X" + std::string(hex.begin(), end);
}

template <class String>
String Expand(const String& text) {
    return platform::ExpandEnvironment(text).value_or(text);
}

}  // namespace

const char* const StringUtils::StartNewLine = "\r\n";

std::string StringUtils::NewLineString() { return StartNewLine; }

std::string StringUtils::Format(const char* format, std::va_list arguments) {
    char buffer[kFormatBuffer];
    const int length = base::FormatBounded(buffer, sizeof buffer, format, arguments);
    if (length < 0) return std::string("Invalid Log format: ") + format;
    return {buffer, std::min(static_cast<std::size_t>(length), kFormatBuffer - 1)};
}

std::string StringUtils::ExpandEnvironmentVariables(const std::string& text) { return Expand(text); }
std::wstring StringUtils::ExpandEnvironmentVariables(const std::wstring& text) { return Expand(text); }

const char* StringUtils::IndentBy(unsigned int count) {
    return kIndent + (kMostIndent - std::min(count, kMostIndent));
}

const char* StringUtils::BoolValAsString(bool value) { return value ? "true" : "false"; }

std::string StringUtils::GetErrorAsString(std::int32_t code) {
    if (code == 0) return {};
    if (const auto text = platform::ErrorCodeText(code)) return "(" + DecimalAndHex(code) + ") " + *text;

    const unsigned long error = platform::LastError();
    if (ICLogger* const logger = detail::RegisteredLoggerIfAny()) {
        logger->Debug("Could not format error %i because of error %lu", code, error);
    }
    return "(unknown error code " + DecimalAndHex(code) + ")";
}

std::string StringUtils::GetErrorCodeAsString(std::int32_t code) { return GetErrorAsString(code); }

std::string StringUtils::GetLastErrorAsString() {
    return GetErrorAsString(static_cast<std::int32_t>(platform::LastError()));
}

std::string StringUtils::GetNtstatusAsString(std::int32_t status) {
    if (status >= 0) return {};
    if (const auto text = platform::NtstatusText(status)) {
        return "(" + DecimalAndHex(status) + ") " + CollapseWhitespace(*text);
    }
    return "(unknown NTSTATUS code " + DecimalAndHex(status) + ")";
}

}  // namespace quillon
