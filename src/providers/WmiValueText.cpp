#include "providers/WmiValueText.h"

#include <system_error>

#include "base/NumberText.h"
#include "base/Utf.h"
#include "platform/TextApi.h"
#include "platform/ole/ComError.h"
#include "quillon/detail/FromChars.h"

namespace quillon {

namespace {

template <class Number>
NumberState ReadNumber(std::string_view text, Number& number) {
    base::SkipSpace(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const std::errc error = detail::FromChars(text.data(), text.data() + text.size(), number).ec;
    if (error == std::errc::invalid_argument) return NumberState::NoNumber;
    return error == std::errc::result_out_of_range ? NumberState::OutOfRange : NumberState::Read;
}

}  // namespace

std::string VariantText(const VARIANT& value) {
    if (value.vt == VT_BSTR) return base::ToUtf8(platform::BstrText(value.bstrVal));
    _variant_t text;
    // Some of the system's headers forget that the source does not change.
    auto* const source = const_cast<VARIANT*>(&value);
    const HRESULT result = ::VariantChangeTypeEx(&text, source, LOCALE_INVARIANT, 0, VT_BSTR);
    if (FAILED(result)) platform::RaiseComError(result);
    return base::ToUtf8(platform::BstrText(text.bstrVal));
}

NumberState ReadInteger(std::string_view text, long long& number) { return ReadNumber(text, number); }

NumberState ReadReal(std::string_view text, double& number) { return ReadNumber(text, number); }

}  // namespace quillon
