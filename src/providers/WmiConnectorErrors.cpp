#include <array>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include "base/Utf.h"
#include "platform/Wbem.h"
#include "providers/WmiCaller.h"
#include "quillon/LogText.h"
#include "quillon/StringUtils.h"
#include "quillon/WmiConnector.h"

namespace quillon {

namespace {

constexpr std::uint32_t kFirstDispatchError = 0x80040200;
constexpr std::uint32_t kLastDispatchError = 0x8004FFFF;

std::wstring Hex(const char* format, std::uint32_t number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), format, number);
    return base::ToWide(text.data());
}

std::wstring MessageWithoutModule(HRESULT code) {
    if (const auto message = platform::ComMessage(code)) return *message;
    const auto number = static_cast<std::uint32_t>(code);
    if (number > kFirstDispatchError && number <= kLastDispatchError) {
        return L"IDispatch error #" + std::to_wstring(number - kFirstDispatchError);
    }
    return L"Unknown error 0x" + Hex("%X", number);
}

std::wstring MessageOf(HRESULT code) {
    static std::mutex mutex;  // the message module's
    const std::lock_guard lock(mutex);
    if (!platform::LoadWbemMessages()) return MessageWithoutModule(code);
    return platform::WbemMessage(code).value_or(L"Unknown error");
}

}  // namespace

void WmiConnector::HandleWbemError(const std::wstring& context, long hr) const {
    const auto code = static_cast<HRESULT>(hr);
    std::wstring text =
        L"WMI error " + Hex("0x%08x", static_cast<std::uint32_t>(code)) + L" - " + MessageOf(code);
    StringUtils::Trim(text);
    m_logger->Error("%s (while %s)", LogText::OneLine(base::ToUtf8(text)).c_str(),
                    LogText::OneLine(base::ToUtf8(context)).c_str());
    *m_lastError = std::move(text);
    m_lastErrorCode = code;
    m_lastErrorDetails = m_caller != nullptr ? m_caller->TakeDetails() : std::wstring();
    if (m_diagnoses && !m_lastErrorDetails.empty())
        m_logger->Debug("WMI tells: %s", LogText::OneLine(base::ToUtf8(m_lastErrorDetails)).c_str());
}

}  // namespace quillon
